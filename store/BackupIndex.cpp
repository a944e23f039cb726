#include "store/BackupIndex.h"

#include "base/SystemFiles.h"
#include "store/DatabaseGuard.h"

#include <SQLiteCpp/SQLiteCpp.h>

namespace Corvadine {

namespace {

constexpr const char* CreateTable = "CREATE TABLE IF NOT EXISTS Backups (Name TEXT NOT NULL, ProjectFile "
                                    "TEXT NOT NULL, ProjectGuid TEXT NOT NULL, "
                                    "Sha256 TEXT NOT NULL, Time TEXT NOT NULL, Reason TEXT NOT NULL)";

constexpr QLatin1String UpdateText("update");
constexpr QLatin1String BeforeRestoreText("before restore");

QString ReadText(const SQLite::Statement& statement, int column)
{
    return QString::fromStdString(statement.getColumn(column).getString());
}

QString EnterAttempt(const TBackupRecord& record)
{
    return u"enter the backup of %1 into"_s.arg(record.ProjectFile);
}

QString RemoveAttempt(const TBackupRecord& record)
{
    return u"remove the backup %1 from"_s.arg(record.Name);
}

bool HasTable(const SQLite::Database& database)
{
    return database.tableExists("Backups");
}

} // namespace

TBackupIndex::TBackupIndex(const QString& path, std::chrono::milliseconds busyTimeout) : FPath(path)
{
    Guarded(u"open the index of backups in"_s, FPath, [&] {
        FDatabase = std::make_unique<SQLite::Database>(PathForLibrary(FPath).toStdString(),
            SQLite::OPEN_READWRITE, static_cast<int>(busyTimeout.count()));
        FDatabase->exec("PRAGMA synchronous=FULL");
    });
}

TBackupIndex::~TBackupIndex() = default;

std::vector<TBackupRecord> TBackupIndex::Records() const
{
    return Guarded(u"read the index of backups in"_s, FPath, [&] {
        std::vector<TBackupRecord> records;
        if (!HasTable(*FDatabase))
            return records;
        SQLite::Statement statement(*FDatabase,
            "SELECT Name,ProjectFile,ProjectGuid,Sha256,Time,Reason,rowid FROM Backups ORDER BY rowid");
        while (statement.executeStep())
            records.push_back({ ReadText(statement, 0), ReadText(statement, 1), ReadText(statement, 2),
                QByteArray::fromHex(ReadText(statement, 3).toLatin1()),
                QDateTime::fromString(ReadText(statement, 4), Qt::ISODate),
                ReadText(statement, 5) == BeforeRestoreText ? TBackupReason::BeforeRestore
                                                            : TBackupReason::Update,
                statement.getColumn(6).getInt64() });
        return records;
    });
}

std::optional<std::int64_t> TBackupIndex::Reserve(const TBackupRecord& record)
{
    return Guarded(EnterAttempt(record), FPath, [&]() -> std::optional<std::int64_t> {
        SQLite::Transaction transaction(*FDatabase, SQLite::TransactionBehavior::IMMEDIATE);
        FDatabase->exec(CreateTable);
        if (LastNumber(record.Name) != 0)
            return std::nullopt;
        const std::int64_t number = Insert(record);
        transaction.commit();
        return number;
    });
}

void TBackupIndex::Withdraw(const TBackupRecord& record, std::int64_t number)
{
    Guarded(RemoveAttempt(record), FPath, [&] {
        SQLite::Statement statement(*FDatabase, "DELETE FROM Backups WHERE rowid=? AND Name=?");
        statement.bind(1, number);
        statement.bind(2, record.Name.toStdString());
        statement.exec();
    });
}

bool TBackupIndex::Add(const TBackupRecord& record)
{
    return Guarded(EnterAttempt(record), FPath, [&] {
        SQLite::Transaction transaction(*FDatabase, SQLite::TransactionBehavior::IMMEDIATE);
        if (LastNumber(record.Name) == 0)
            return false;
        Insert(record);
        transaction.commit();
        return true;
    });
}

bool TBackupIndex::Remove(const TBackupRecord& last, const std::function<void()>& removeCopy)
{
    return Guarded(RemoveAttempt(last), FPath, [&] {
        SQLite::Transaction transaction(*FDatabase, SQLite::TransactionBehavior::IMMEDIATE);
        if (LastNumber(last.Name) > last.Number)
            return false;
        removeCopy();
        SQLite::Statement statement(*FDatabase, "DELETE FROM Backups WHERE Name=?");
        statement.bind(1, last.Name.toStdString());
        statement.exec();
        transaction.commit();
        return true;
    });
}

// Returns the number of the newest record of `name`, or 0 if there is no record.
std::int64_t TBackupIndex::LastNumber(const QString& name) const
{
    if (!HasTable(*FDatabase))
        return 0;
    SQLite::Statement statement(*FDatabase, "SELECT MAX(rowid) FROM Backups WHERE Name=?");
    statement.bind(1, name.toStdString());
    statement.executeStep();
    return statement.getColumn(0).getInt64(); // NULL gives 0
}

std::int64_t TBackupIndex::Insert(const TBackupRecord& record)
{
    SQLite::Statement statement(*FDatabase, "INSERT INTO Backups VALUES (?,?,?,?,?,?)");
    const QString reason = record.Reason == TBackupReason::BeforeRestore ? BeforeRestoreText : UpdateText;
    int index = 1;
    for (const QString& value : { record.Name, record.ProjectFile, record.ProjectGuid,
             QString::fromLatin1(record.Sha256.toHex()), record.Time.toString(Qt::ISODate), reason })
        statement.bind(index++, value.toStdString());
    statement.exec();
    return FDatabase->getLastInsertRowid();
}

} // namespace Corvadine
