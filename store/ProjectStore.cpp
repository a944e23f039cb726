#include "store/ProjectStore.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/SystemFiles.h"
#include "store/DatabaseGuard.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>
#include <QStringList>

#include <sqlite3.h>

#include <cassert>

namespace Corvadine {

namespace {

// All releases so far leave user_version at 0. A release whose tables this code could damage will raise it.
constexpr int KnownSchemaVersion = 0;

constexpr QLatin1String OpenAttempt("open the project database");
constexpr QLatin1String TableName("Projects");

// Names the reason where SQLite would only say "unable to open database file".
void RefuseImpossiblePath(const QString& path)
{
    const QFileInfo info(path);
    const auto refuse = [&](const char* reason) {
        throw TError(TErrorKind::Io, OpenAttempt, path, QLatin1String(reason));
    };
    if (info.isDir())
        refuse("it is a folder");
    if (info.exists() && !info.isFile())
        refuse("it is not a regular file");
    if (!FolderExists(info.path()))
        refuse("its folder does not exist");
}

// Looks at the mode bits, because the system would let the superuser write to a file marked read-only.
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

// The text must stay the same in every release, because SQLite keeps it in the file.
std::string CreateTable()
{
    QStringList columns;
    for (const TColumn& column : Columns)
        columns << u"%1 %2"_s.arg(QLatin1String(column.Name), QLatin1String(column.Type));
    return u"CREATE TABLE Projects (%1)"_s.arg(columns.join(u',')).toStdString();
}

// The names of `fields`, each followed by `suffix`, with commas between.
QString ColumnList(const TFieldSet& fields, const char* suffix = "")
{
    QStringList names;
    for (const TField field : fields)
        names << QLatin1String(ColumnOf(field).Name) + QLatin1String(suffix);
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
    QStringList names;
    for (const TColumn& column : Columns)
        names << QLatin1String(column.Name);
    return u"SELECT %1 FROM Projects %2"_s.arg(names.join(u','), QLatin1String(clause)).toStdString();
}

// Returns the current row of a statement made by SelectRows.
TProject RowOf(const SQLite::Statement& statement)
{
    TProject project;
    int index = 0;
    for (const TColumn& column : Columns)
        VisitField(project, column.Field, TColumnReader { statement.getColumn(index++) });
    return project;
}

} // namespace

TProjectStore::TProjectStore(const QString& path, std::chrono::milliseconds busyTimeout)
    : FPath(AbsolutePath(path)) // SQLite would take a relative name like "file:x" for a URI
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
    const QString query = u"SELECT Name FROM sqlite_master WHERE Type='table' AND name='%1'"_s.arg(
        QString(name).replace(u'\'', "''"_L1));
    return Guarded(u"read the tables of"_s, FPath,
        [&] { return SQLite::Statement(*FDatabase, query.toStdString()).executeStep(); });
}

std::vector<TProject> TProjectStore::ReadProjects() const
{
    return Guarded(u"read the projects of"_s, FPath, [&] {
        std::vector<TProject> projects;
        SQLite::Statement statement(*FDatabase, SelectRows("ORDER BY ID"));
        while (statement.executeStep())
            projects.push_back(RowOf(statement));
        return projects;
    });
}

std::int64_t TProjectStore::DataVersion()
{
    FollowFile();
    return Guarded(u"read the version of"_s, FPath, [&] {
        FDatabase->setBusyTimeout(0);
        const auto restore = qScopeGuard(
            [this] { sqlite3_busy_timeout(FDatabase->getHandle(), static_cast<int>(FBusyTimeout.count())); });
        constexpr int VersionBits = 32; // SQLite counts the versions anew for each connection
        return (FOpenings << VersionBits) + FDatabase->execAndGet("PRAGMA data_version").getInt64();
    });
}

TProject TProjectStore::Insert(const TProject& project, const TFieldSet& fields)
{
    FollowFile();
    const QString attempt = u"add the project %1 to"_s.arg(project.ProjectFile);
    return Guarded(attempt, FPath, [&] {
        SQLite::Transaction transaction(*FDatabase, SQLite::TransactionBehavior::IMMEDIATE);
        const QString parameters = QStringList(static_cast<qsizetype>(fields.size()), u"?"_s).join(u',');
        const QString sql = fields.empty()
            ? u"INSERT INTO Projects DEFAULT VALUES"_s
            : u"INSERT INTO Projects (%1) VALUES (%2)"_s.arg(ColumnList(fields), parameters);
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
    FollowFile();
    const QString attempt = u"save the project %1 in"_s.arg(project.ProjectFile);
    return Guarded(attempt, FPath, [&] {
        SQLite::Transaction transaction(*FDatabase, SQLite::TransactionBehavior::IMMEDIATE);
        RequireUnreplaced(project, fields, attempt);
        const QString sql = u"UPDATE Projects SET %1 WHERE ID=?"_s.arg(ColumnList(fields, "=?"));
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
    FollowFile();
    Guarded(u"delete the project %1 from"_s.arg(project.ProjectFile), FPath, [&] {
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
    // With read_uncommitted, connections that share one cache read without waiting for a writer.
    FDatabase->exec("PRAGMA read_uncommitted=1; PRAGMA synchronous=FULL");
    EnsureSchema();
    ++FOpenings;
}

// Opens the file at the path if it is no longer the open file. Throws TError if the new file is missing
// or cannot be opened. Also throws if the file is empty, because its writer may not have finished.
void TProjectStore::FollowFile()
{
    int hasMoved = 0; // stays 0 on Windows, where an open database cannot be replaced
    sqlite3_file_control(FDatabase->getHandle(), "main", SQLITE_FCNTL_HAS_MOVED, &hasMoved);
    if (hasMoved == 0)
        return;
    RefuseImpossiblePath(FPath);
    if (QFileInfo(FPath).size() == 0)
        throw TError(TErrorKind::Io, OpenAttempt, FPath, u"another program has removed it"_s);
    auto former = std::move(FDatabase);
    try {
        Guarded(OpenAttempt, FPath, [&] { Open(); });
    } catch (...) {
        FDatabase = std::move(former);
        throw;
    }
}

// Removes the new file if opening failed and left it empty. SQLite creates the file before it learns, for
// example, that the disk is full. The lock keeps other programs from filling the file meanwhile. A program
// that has opened the file and writes later gets an error from SQLite.
void TProjectStore::RemoveEmptyFile() noexcept
{
    try {
        if (!FDatabase)
            return;
        const SQLite::Transaction lock(*FDatabase, SQLite::TransactionBehavior::EXCLUSIVE);
        if (QFileInfo(FPath).size() == 0)
            QFile::remove(FPath);
    } catch (const std::exception&) { // another program uses the file, so leave it
    }
}

void TProjectStore::EnsureSchema()
{
    const int version = FDatabase->execAndGet("PRAGMA user_version").getInt();
    if (version > KnownSchemaVersion)
        throw TError(TErrorKind::Io, OpenAttempt, FPath,
            u"it belongs to a newer release of Corvadine (its schema is version %1)"_s.arg(version));
    if (TableExists(TableName) && HasResampleFilter())
        return;

    // Look again under the write lock: another program that started at the same moment may have been faster.
    SQLite::Transaction transaction(*FDatabase, SQLite::TransactionBehavior::IMMEDIATE);
    if (!TableExists(TableName)) {
        FDatabase->exec(CreateTable());
        FDatabase->exec("CREATE UNIQUE INDEX index_ProjectFile ON Projects(ProjectFile)");
    } else if (!HasResampleFilter()) {
        FDatabase->exec("ALTER TABLE Projects ADD COLUMN ResampleFilter INTEGER");
        FDatabase->exec("UPDATE Projects SET ResampleFilter=6");
    }
    transaction.commit();
}

bool TProjectStore::HasResampleFilter() const
{
    try {
        SQLite::Statement(*FDatabase, "Select ResampleFilter from Projects").executeStep();
        return true;
    } catch (const SQLite::Exception& error) {
        if (error.getErrorCode() == SQLITE_ERROR) // an error in the statement: there is no such column
            return false;
        throw; // a locked or damaged file says nothing about the column
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
        throw TError(TErrorKind::Conflict, attempt, FPath, u"another program has deleted it meanwhile"_s);
    if (!fields.contains(TField::ProjectFile) && stored->ProjectFile != project.ProjectFile)
        throw TError(TErrorKind::Conflict, attempt, FPath,
            u"another program has put %1 in its place"_s.arg(stored->ProjectFile));
}

} // namespace Corvadine
