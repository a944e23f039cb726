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
        SQLite::Statement statement(
            *FDatabase, "SELECT Name,ProjectFile,ProjectGuid,Sha256,Time,Reason FROM Backups ORDER BY rowid");
        while (statement.executeStep())
            records.push_back({ ReadText(statement, 0), ReadText(statement, 1), ReadText(statement, 2),
                QByteArray::fromHex(ReadText(statement, 3).toLatin1()),
                QDateTime::fromString(ReadText(statement, 4), Qt::ISODate),
                ReadText(statement, 5) == BeforeRestoreText ? TBackupReason::BeforeRestore
                                                            : TBackupReason::Update });
        return records;
    });
}

bool TBackupIndex::Reserve(const TBackupRecord& record)
{
    return Guarded(u"enter the backup of %1 into"_s.arg(record.ProjectFile), FPath, [&] {
        SQLite::Transaction transaction(*FDatabase, SQLite::TransactionBehavior::IMMEDIATE);
        FDatabase->exec(CreateTable);
        SQLite::Statement existing(*FDatabase, "SELECT 1 FROM Backups WHERE Name=?");
        existing.bind(1, record.Name.toStdString());
        if (existing.executeStep())
            return false;
        Insert(record);
        transaction.commit();
        return true;
    });
}

void TBackupIndex::Add(const TBackupRecord& record)
{
    Guarded(u"enter the backup of %1 into"_s.arg(record.ProjectFile), FPath, [&] {
        SQLite::Transaction transaction(*FDatabase, SQLite::TransactionBehavior::IMMEDIATE);
        FDatabase->exec(CreateTable);
        Insert(record);
        transaction.commit();
    });
}

void TBackupIndex::Remove(const QString& name)
{
    Guarded(u"remove the backup %1 from"_s.arg(name), FPath, [&] {
        if (!HasTable(*FDatabase))
            return;
        SQLite::Statement statement(*FDatabase, "DELETE FROM Backups WHERE Name=?");
        statement.bind(1, name.toStdString());
        statement.exec();
    });
}

void TBackupIndex::Insert(const TBackupRecord& record)
{
    SQLite::Statement statement(*FDatabase, "INSERT INTO Backups VALUES (?,?,?,?,?,?)");
    const QString reason = record.Reason == TBackupReason::BeforeRestore ? BeforeRestoreText : UpdateText;
    int index = 1;
    for (const QString& value : { record.Name, record.ProjectFile, record.ProjectGuid,
             QString::fromLatin1(record.Sha256.toHex()), record.Time.toString(Qt::ISODate), reason })
        statement.bind(index++, value.toStdString());
    statement.exec();
}

} // namespace Corvadine
