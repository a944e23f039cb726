#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <chrono>
#include <memory>
#include <vector>

namespace SQLite {
class Database;
}

namespace Corvadine {

// Why a project file was copied.
enum class TBackupReason {
    Update,        // an update was about to change it
    BeforeRestore, // a backup was about to replace it
};

// One time that a project file's content was kept. Content that is kept already gets a further record and no
// further file, so several records may have one name.
struct TBackupRecord {
    QString Name;        // of the copy, without folder
    QString ProjectFile; // full path of the file that was copied
    QString ProjectGuid; // as the copy has it; empty if it has none
    QByteArray Sha256;   // of the copy's bytes; 32 bytes
    QDateTime Time;      // with its offset from UTC
    TBackupReason Reason = TBackupReason::Update;
};

// What is known of the files in the backup folder: the table Backups of the project database, which is made
// when it is missing. Several programs may use it at once; each function that writes is one transaction. What
// fails throws TError(Io). Use on the thread that made it.
class TBackupIndex {
public:
    // Opens the existing database `path`. A database that can only be read can only be asked.
    explicit TBackupIndex(
        const QString& path, std::chrono::milliseconds busyTimeout = std::chrono::seconds(5));
    ~TBackupIndex();
    TBackupIndex(const TBackupIndex&) = delete;
    TBackupIndex& operator=(const TBackupIndex&) = delete;

    // All records, oldest first by the order of their writing.
    std::vector<TBackupRecord> Records() const;

    // Adds the first record of a name. False, and nothing is written, if the name has one.
    bool Reserve(const TBackupRecord& record);

    // Adds a further record of a name.
    void Add(const TBackupRecord& record);

    // Removes all records of a name.
    void Remove(const QString& name);

private:
    void Insert(const TBackupRecord& record);

    QString FPath;
    std::unique_ptr<SQLite::Database> FDatabase;
};

} // namespace Corvadine
