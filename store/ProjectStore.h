#pragma once

#include "store/Project.h"

#include <QString>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace SQLite {
class Database;
}

namespace Corvadine {

// What the project database is called in the program folder.
inline constexpr const char* ProjectDatabaseName = "Corvadine.db";

// The project database: one SQLite file with the table Projects, held open by one connection. Each function
// that writes is one transaction, so that a kill or a power failure leaves all of it or nothing.
// Several programs may use one file: a function waits for the others at most the busy timeout unless it says
// otherwise.
// Whatever fails throws TError(Database) naming the attempt, the file and SQLite's own text.
// Use on the thread that made it.
class TProjectStore {
public:
    // Opens `path`, creating the file and its table if they are missing, and brings the table of an older
    // release up to date. A file marked read-only can be read if its table is complete. A file of a newer
    // release (its PRAGMA user_version is above ours) is refused. When it throws, a file that was missing is
    // missing again.
    explicit TProjectStore(
        const QString& path, std::chrono::milliseconds busyTimeout = std::chrono::seconds(5));
    ~TProjectStore();
    TProjectStore(const TProjectStore&) = delete;
    TProjectStore& operator=(const TProjectStore&) = delete;

    // The absolute path of the database file.
    const QString& Path() const { return FPath; }

    // Whether the file can only be read.
    bool IsReadOnly() const;

    bool TableExists(const QString& name) const;

    // All projects in ascending ID, the order in which they were added.
    std::vector<TProject> ReadProjects() const;

    // A number that differs from an earlier one if another connection has written to the database between
    // the two; what this one writes does not count. Does not wait for a database that is locked.
    std::int64_t DataVersion() const;

    // Adds a row with those `fields` of `project`; the other columns stay NULL. Returns the row as stored,
    // with its ID.
    TProject Insert(const TProject& project, const TFieldSet& fields);

    // Writes those `fields` of `project`, and only those, to the row with its ID, so that what another
    // program wrote to other fields stays. Returns the row as it is now.
    // Throws TError(Conflict) when the row is gone or, since SQLite gives the ID of a deleted last row to the
    // next one, belongs to another project file by now. REQUIRES: fields is not empty.
    TProject Update(const TProject& project, const TFieldSet& fields);

    // Removes the row with this project's ID and project file; it is no error if another program was faster.
    void Delete(const TProject& project);

private:
    void Open();
    void RemoveEmptyFile() noexcept;
    void EnsureSchema();
    void CreateSchema();
    void AddResampleFilter();
    bool HasResampleFilter() const;
    std::optional<TProject> ReadProject(std::int64_t id) const;
    void RequireUnreplaced(const TProject& project, const TFieldSet& fields, const QString& attempt) const;

    QString FPath;
    std::chrono::milliseconds FBusyTimeout;
    std::unique_ptr<SQLite::Database> FDatabase;
};

} // namespace Corvadine
