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

// The name of the project database in the program folder.
inline constexpr const char* ProjectDatabaseName = "Corvadine.db";

// The project database: one SQLite file with the table Projects, held open by one connection. Each function
// that writes is one transaction, so that a kill or a power failure leaves all of its changes or none.
// Several programs may use the file at once. A function waits for other programs for at most the busy
// timeout, unless its comment says otherwise. If another program replaces the file, the next write or
// DataVersion() opens the new file. If this fails, the function throws, and the former file stays open.
// Functions that fail throw TError(Io) with the attempt, the file and the reason. Use on the thread that made
// the object.
class TProjectStore {
public:
    // Opens `path`. Creates the file and its table if they are missing, and adds the columns that files of
    // older releases lack. A file marked read-only can be read if its table is complete. A file of a newer
    // release (its PRAGMA user_version is above ours) is refused. If the constructor throws, it leaves no new
    // file behind.
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

    // Returns all projects in ascending ID, the order in which they were added.
    std::vector<TProject> ReadProjects() const;

    // Returns a number that changes when another connection writes to the database, or when a replaced file
    // is opened. Writes of this connection do not change the number. Does not wait for a locked database,
    // unless the file was replaced.
    std::int64_t DataVersion();

    // Adds a row with the values that `project` has in `fields`. The other columns stay NULL. Returns the row
    // as stored, with its ID.
    TProject Insert(const TProject& project, const TFieldSet& fields);

    // Writes the `fields` of `project` to the row with its ID. Other fields keep what another program wrote
    // to them. Returns the row as it is now. Throws TError(Conflict) when the row is gone. Throws the same
    // when the row has another project file by now, unless `fields` contains the project file. A row can have
    // another project file because SQLite gives the ID of a deleted last row to the next new row. REQUIRES:
    // fields is not empty.
    TProject Update(const TProject& project, const TFieldSet& fields);

    // Removes the row with this project's ID and project file. Does nothing if there is no such row any more.
    void Delete(const TProject& project);

private:
    void Open();
    void FollowFile();
    void RemoveEmptyFile() noexcept;
    void EnsureSchema();
    bool HasResampleFilter() const;
    std::optional<TProject> ReadProject(std::int64_t id) const;
    void RequireUnreplaced(const TProject& project, const TFieldSet& fields, const QString& attempt) const;

    QString FPath;
    std::chrono::milliseconds FBusyTimeout;
    std::unique_ptr<SQLite::Database> FDatabase;
    std::int64_t FOpenings = 0; // how many files have been opened
};

} // namespace Corvadine
