#include "store/ProjectStore.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/SystemFiles.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>
#include <QStringList>

#include <sqlite3.h>

#include <cassert>

namespace Corvadine {

namespace {

// Both statements are part of the file's contract with every other release: SQLite keeps their text in it.
constexpr const char* CreateTable =
    "CREATE TABLE Projects (ID integer PRIMARY KEY,ProjectFile VARCHAR(256),IconImageName VARCHAR(256),"
    "SplashImageName VARCHAR(256),IncAndroid BOOLEAN,IncIPhone BOOLEAN,IncIPad BOOLEAN,IncWindows BOOLEAN,"
    "TwoxSize INTEGER,OutputFolder VARCHAR(256),PickColor INTEGER,PixelFormat INTEGER,Compression INTEGER,"
    "ResampleFilter INTEGER)";
constexpr const char* CreateIndex = "CREATE UNIQUE INDEX index_ProjectFile ON Projects(ProjectFile)";

// Releases so far leave user_version at 0. One whose tables we could damage will raise it.
constexpr int KnownSchemaVersion = 0;

constexpr QLatin1String OpenAttempt("open the project database");
constexpr QLatin1String TableName("Projects");

// Runs `action` and turns SQLite's exception into ours.
template <typename TAction> auto Guarded(const QString& attempt, const QString& file, TAction action)
{
    try {
        return action();
    } catch (const SQLite::Exception& error) {
        throw TError(TErrorKind::Database, attempt, file, QString::fromUtf8(error.what()));
    }
}

// SQLite says "unable to open database file" to all of these.
void RefuseImpossiblePath(const QString& path)
{
    const QFileInfo info(path);
    const auto refuse = [&](const char* reason) {
        throw TError(TErrorKind::Database, OpenAttempt, path, QLatin1String(reason));
    };
    if (info.isDir())
        refuse("it is a folder");
    if (info.exists() && !info.isFile())
        refuse("it is not a regular file");
    if (!FolderExists(info.path()))
        refuse("its folder does not exist");
}

// The mode bits are looked at because the superuser, whom the system lets write anything, means the mark too.
int OpenFlags(const QString& path)
{
    constexpr auto AnyoneMayWrite = QFile::WriteOwner | QFile::WriteGroup | QFile::WriteOther;
    if (QFile::exists(path) && !(QFile::permissions(path) & AnyoneMayWrite))
        return SQLite::OPEN_READONLY;
    return SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE;
}

struct TColumnReader {
    void operator()(std::int64_t& number) const { number = Column.getInt64(); }
    void operator()(QString& text) const { text = QString::fromStdString(Column.getString()); }
    void operator()(bool& ticked) const { ticked = Column.getInt() != 0; }
    void operator()(std::optional<int>& number) const
    {
        number = Column.isNull() ? std::nullopt : std::optional(Column.getInt());
    }

    const SQLite::Column& Column;
};

struct TParameterBinder {
    void operator()(std::int64_t number) const { Statement.bind(Index, number); }
    void operator()(const QString& text) const { Statement.bind(Index, text.toStdString()); }
    void operator()(bool ticked) const { Statement.bind(Index, ticked ? 1 : 0); }
    void operator()(std::optional<int> number) const
    {
        if (number)
            Statement.bind(Index, *number);
        else
            Statement.bind(Index);
    }

    SQLite::Statement& Statement;
    int Index;
};

// The names of `fields`, each followed by `suffix`, with commas between.
template <typename TFields> QString ColumnList(const TFields& fields, const char* suffix = "")
{
    QStringList names;
    for (const TField field : fields)
        names << QLatin1String(FieldName(field)) + QLatin1String(suffix);
    return names.join(u',');
}

// Binds `fields` of `project` to the parameters from 1 on; returns the number of the next parameter.
int BindFields(SQLite::Statement& statement, const TProject& project, const TFieldSet& fields)
{
    int index = 1;
    for (const TField field : fields)
        VisitField(project, field, TParameterBinder { statement, index++ });
    return index;
}

std::string SelectRows(const char* clause)
{
    return QStringLiteral("SELECT %1 FROM Projects %2")
        .arg(ColumnList(AllFields), QLatin1String(clause))
        .toStdString();
}

// The row on which a statement made by SelectRows stands.
TProject RowOf(const SQLite::Statement& statement)
{
    TProject project;
    int index = 0;
    for (const TField field : AllFields)
        VisitField(project, field, TColumnReader { statement.getColumn(index++) });
    return project;
}

} // namespace

TProjectStore::TProjectStore(const QString& path, std::chrono::milliseconds busyTimeout)
    : FPath(AbsolutePath(path)) // absolute also because SQLite takes a name like "file:x" for a URI
    , FBusyTimeout(busyTimeout)
{
    RefuseImpossiblePath(FPath);
    const bool isNew = !QFile::exists(FPath);
    try {
        Guarded(OpenAttempt, FPath, [&] { Open(); });
    } catch (...) {
        if (isNew)
            RemoveEmptyFile();
        throw;
    }
}

TProjectStore::~TProjectStore() = default;

bool TProjectStore::IsReadOnly() const
{
    return sqlite3_db_readonly(FDatabase->getHandle(), "main") == 1;
}

bool TProjectStore::TableExists(const QString& name) const
{
    const QString query = QStringLiteral("SELECT Name FROM sqlite_master WHERE Type='table' AND name='%1'")
                              .arg(QString(name).replace(u'\'', QLatin1String("''")));
    return Guarded(QStringLiteral("read the tables of"), FPath,
        [&] { return SQLite::Statement(*FDatabase, query.toStdString()).executeStep(); });
}

std::vector<TProject> TProjectStore::ReadProjects() const
{
    return Guarded(QStringLiteral("read the projects of"), FPath, [&] {
        std::vector<TProject> projects;
        SQLite::Statement statement(*FDatabase, SelectRows("ORDER BY ID"));
        while (statement.executeStep())
            projects.push_back(RowOf(statement));
        return projects;
    });
}

std::int64_t TProjectStore::DataVersion() const
{
    return Guarded(QStringLiteral("read the version of"), FPath, [&] {
        FDatabase->setBusyTimeout(0);
        const auto restore = qScopeGuard(
            [this] { sqlite3_busy_timeout(FDatabase->getHandle(), static_cast<int>(FBusyTimeout.count())); });
        return FDatabase->execAndGet("PRAGMA data_version").getInt64();
    });
}

TProject TProjectStore::Insert(const TProject& project, const TFieldSet& fields)
{
    const QString attempt = QStringLiteral("add the project %1 to").arg(project.ProjectFile);
    return Guarded(attempt, FPath, [&] {
        SQLite::Transaction transaction(*FDatabase, SQLite::TransactionBehavior::IMMEDIATE);
        const QString parameters =
            QStringList(static_cast<qsizetype>(fields.size()), QStringLiteral("?")).join(u',');
        const QString sql = fields.empty()
            ? QStringLiteral("INSERT INTO Projects DEFAULT VALUES")
            : QStringLiteral("INSERT INTO Projects (%1) VALUES (%2)").arg(ColumnList(fields), parameters);
        SQLite::Statement statement(*FDatabase, sql.toStdString());
        BindFields(statement, project, fields);
        statement.exec();
        TProject stored = ReadProject(FDatabase->getLastInsertRowid()).value();
        transaction.commit();
        return stored;
    });
}

TProject TProjectStore::Update(const TProject& project, const TFieldSet& fields)
{
    assert(!fields.empty());
    const QString attempt = QStringLiteral("save the project %1 in").arg(project.ProjectFile);
    return Guarded(attempt, FPath, [&] {
        SQLite::Transaction transaction(*FDatabase, SQLite::TransactionBehavior::IMMEDIATE);
        RequireUnreplaced(project, fields, attempt);
        const QString sql = QStringLiteral("UPDATE Projects SET %1 WHERE ID=?").arg(ColumnList(fields, "=?"));
        SQLite::Statement statement(*FDatabase, sql.toStdString());
        statement.bind(BindFields(statement, project, fields), project.ID);
        statement.exec();
        TProject stored = ReadProject(project.ID).value();
        transaction.commit();
        return stored;
    });
}

void TProjectStore::Delete(const TProject& project)
{
    Guarded(QStringLiteral("delete the project %1 from").arg(project.ProjectFile), FPath, [&] {
        SQLite::Transaction transaction(*FDatabase, SQLite::TransactionBehavior::IMMEDIATE);
        const auto stored = ReadProject(project.ID);
        if (!stored || stored->ProjectFile != project.ProjectFile)
            return;
        SQLite::Statement statement(*FDatabase, "DELETE FROM Projects WHERE ID=?");
        statement.bind(1, project.ID);
        statement.exec();
        transaction.commit();
    });
}

void TProjectStore::Open()
{
    FDatabase = std::make_unique<SQLite::Database>(
        PathForLibrary(FPath).toStdString(), OpenFlags(FPath), static_cast<int>(FBusyTimeout.count()));
    // The first has an effect only where SQLite shares one cache between connections: readers need not
    // wait for a writer then, and nothing here needs them to.
    FDatabase->exec("PRAGMA read_uncommitted=1; PRAGMA synchronous=FULL");
    EnsureSchema();
}

// SQLite makes the file before it knows that there is no room for a table. The lock keeps out a program that
// is filling the same file; one that comes later is told by SQLite that its file is gone.
void TProjectStore::RemoveEmptyFile() noexcept
{
    try {
        if (!FDatabase)
            return;
        const SQLite::Transaction lock(*FDatabase, SQLite::TransactionBehavior::EXCLUSIVE);
        if (QFileInfo(FPath).size() == 0)
            QFile::remove(FPath);
    } catch (const std::exception&) { // another program has the file, so it is not ours to remove
    }
}

void TProjectStore::EnsureSchema()
{
    const int version = FDatabase->execAndGet("PRAGMA user_version").getInt();
    if (version > KnownSchemaVersion)
        throw TError(TErrorKind::Database, OpenAttempt, FPath,
            QStringLiteral("it belongs to a newer release of Corvadine (its schema is version %1)")
                .arg(version));
    if (!TableExists(TableName))
        CreateSchema();
    else if (!HasResampleFilter())
        AddResampleFilter();
}

// In the two steps that change the schema, what was found missing is looked for again once the file is ours
// alone: another program may have started at the same moment.

void TProjectStore::CreateSchema()
{
    SQLite::Transaction transaction(*FDatabase, SQLite::TransactionBehavior::IMMEDIATE);
    if (TableExists(TableName))
        return;
    FDatabase->exec(CreateTable);
    FDatabase->exec(CreateIndex);
    transaction.commit();
}

void TProjectStore::AddResampleFilter()
{
    SQLite::Transaction transaction(*FDatabase, SQLite::TransactionBehavior::IMMEDIATE);
    if (HasResampleFilter())
        return;
    FDatabase->exec("ALTER TABLE Projects ADD COLUMN ResampleFilter INTEGER");
    FDatabase->exec("UPDATE Projects SET ResampleFilter=6");
    transaction.commit();
}

bool TProjectStore::HasResampleFilter() const
{
    try {
        SQLite::Statement(*FDatabase, "Select ResampleFilter from Projects").executeStep();
        return true;
    } catch (const SQLite::Exception& error) {
        if (error.getErrorCode() == SQLITE_ERROR) // the statement makes no sense: there is no such column
            return false;
        throw; // locked, damaged and the like say nothing about the column
    }
}

std::optional<TProject> TProjectStore::ReadProject(std::int64_t id) const
{
    SQLite::Statement statement(*FDatabase, SelectRows("WHERE ID=?"));
    statement.bind(1, id);
    return statement.executeStep() ? std::optional(RowOf(statement)) : std::nullopt;
}

void TProjectStore::RequireUnreplaced(
    const TProject& project, const TFieldSet& fields, const QString& attempt) const
{
    const auto stored = ReadProject(project.ID);
    if (!stored)
        throw TError(
            TErrorKind::Conflict, attempt, FPath, QStringLiteral("another program has deleted it meanwhile"));
    if (!fields.contains(TField::ProjectFile) && stored->ProjectFile != project.ProjectFile)
        throw TError(TErrorKind::Conflict, attempt, FPath,
            QStringLiteral("another program has put %1 in its place").arg(stored->ProjectFile));
}

} // namespace Corvadine
