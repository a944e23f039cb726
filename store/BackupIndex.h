#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace SQLite {
class Database;
}

namespace Corvadine {

// The folder for backups, in the data folder.
inline constexpr const char* BackupFolderName = "Project Backups";

// Why a project file was copied.
enum class TBackupReason {
    Update,        // an update was about to change the file
    BeforeRestore, // a backup was about to replace the file
};

// Says when and why the content of a project file was kept. If a copy has the same content already, the new
// record gets the name of this copy. So several records may have one name.
struct TBackupRecord {
    QString Name;        // of the copy, without folder
    QString ProjectFile; // full path of the file that was copied
    QString ProjectGuid; // read from the copy; empty if the copy has none
    QByteArray Sha256;   // of the copy's bytes; 32 bytes
    QDateTime Time;      // with its offset from UTC
    TBackupReason Reason = TBackupReason::Update;
    std::int64_t Number = 0; // of the record in the index; grows with each new record; 0 before it is added
};

// The records of the files in the backup folder. They are rows of the table Backups in the project database.
// Reserve and Add create the table if it is missing. Several programs may use the table at once. Each
// function that writes is one transaction. Every function throws TError(Io) when it fails. Use on the thread
// that made the object.
class TBackupIndex {
public:
    // Opens the existing database `path`. If the file can only be read, the functions that write throw.
    explicit TBackupIndex(
        const QString& path, std::chrono::milliseconds busyTimeout = std::chrono::seconds(5));
    ~TBackupIndex();
    TBackupIndex(const TBackupIndex&) = delete;
    TBackupIndex& operator=(const TBackupIndex&) = delete;

    // Returns all records in the order in which they were written.
    std::vector<TBackupRecord> Records() const;

    // Adds the first record of a name. Returns the number of the record. Returns nothing, and writes nothing,
    // if the name has a record already.
    std::optional<std::int64_t> Reserve(const TBackupRecord& record);

    // Removes the record that Reserve() has added as `number`.
    void Withdraw(const TBackupRecord& record, std::int64_t number);

    // Adds a further record of a name. Returns false, and writes nothing, if the name has no record. Another
    // program has then removed the copy.
    bool Add(const TBackupRecord& record);

    // Calls `removeCopy`, and then removes all records that have the name of `last`. No other program can add
    // a record in between. Returns false, and does nothing, if the name has a newer record than `last`. The
    // records stay if `removeCopy` throws.
    bool Remove(const TBackupRecord& last, const std::function<void()>& removeCopy);

private:
    std::int64_t LastNumber(const QString& name) const;
    std::int64_t Insert(const TBackupRecord& record);

    QString FPath;
    std::unique_ptr<SQLite::Database> FDatabase;
};

} // namespace Corvadine
