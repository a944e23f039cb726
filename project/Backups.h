#pragma once

#include "store/BackupIndex.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

// The copies that are made of a project file before it is changed. A copy is named after the file and the
// time, so "Demo.dproj" of 5 March 2024, 14:07:09 is kept as "Demo.20240305140709.dproj". Projects of one
// file name share the folder; the index in the project database tells which project each copy belongs to.
namespace Corvadine {

// The folder for backups, in the data folder.
inline constexpr const char* BackupFolderName = "Project Backups";

struct TBackup {
    QString Name; // without folder
    QString Path;
    QDateTime Time;                      // when its content was last kept; without a record, from its name
    std::optional<TBackupReason> Reason; // of the last record; none without a record
    QString Fault;                       // why a recorded copy is damaged; empty if it is not
};

// Which backup is put back, and when.
struct TRestoreOrder {
    QString Name {};       // empty: the newest that an update made
    bool IsUndo = false;   // without a name: the newest that a restore made instead
    bool IsForced = false; // by name: also one of another project, without a record, or damaged
    QDateTime Now {};      // local
};

struct TRestoredBackup {
    QString BackupPath; // what was put back
    QString SavedPath;  // the backup of what it replaced; empty if there was no file or nothing was written
    bool IsWritten = false; // false: the project file had this content already
};

// When a copy is made, if there is an equal one already.
enum class TKeep {
    Once,   // none is made: the equal one gets a further record
    Always, // one is made; it replaces an earlier one of the same project and second
};

// The backups of one data folder. Several programs may use it at once: no copy ever replaces another one, but
// for TKeep::Always as it says. Paths of project files are full ones. Use on one thread.
class TBackups {
public:
    // `folder` need not exist. `database` is the project database; it is opened when it is first needed, and
    // then waited for as long as `busyTimeout` while another program has locked it.
    TBackups(const QString& folder, const QString& database,
        std::chrono::milliseconds busyTimeout = std::chrono::seconds(5));
    ~TBackups();
    TBackups(const TBackups&) = delete;
    TBackups& operator=(const TBackups&) = delete;

    // Keeps `bytes`, the content of `projectFile`, and records it. The copy's name has the first second from
    // `time` (local) on that is free. A missing folder is created. Returns the copy's path. Throws TError:
    // Usage for an empty folder, Io, Database. A process that is killed leaves a copy with its record or
    // nothing.
    QString Keep(const QString& projectFile, const QByteArray& bytes, const QDateTime& time,
        TBackupReason reason, TKeep keep = TKeep::Once);

    // Keeps `bytes` without a record, for a database that cannot be written. Otherwise as Keep().
    QString KeepUnrecorded(const QString& projectFile, const QByteArray& bytes, const QDateTime& time);

    // The copies recorded for this path, and those named after the file that have no record, oldest first.
    // Throws TError(Io).
    std::vector<TBackup> List(const QString& projectFile) const;

    // Puts a backup back, byte for byte and in one step. The file it replaces is kept first. A project file
    // that is gone gets the access rights of its backup. Throws TError, the project file then being as it
    // was: NotFound if there is no such backup; Conflict if it is not known to be of this path and not
    // forced, or if another program changes the project file meanwhile; BadInput if it is damaged and not
    // forced; Usage if its name is a path; Io; Database.
    TRestoredBackup Restore(const QString& projectFile, const TRestoreOrder& order);

    // Removes the recorded copies of this path but for the `kept` newest, and returns the names of those
    // removed. Copies without a record stay. Throws TError: Io for the first that cannot be removed,
    // Database.
    QStringList Prune(const QString& projectFile, int kept);

private:
    struct TChoice;

    TBackupIndex& Index() const;
    QString PathOf(const QString& name) const;
    QString EqualCopy(const TBackupRecord& record) const;
    bool IsOwn(const QString& name, const QString& projectFile) const;
    bool WriteRecorded(const TBackupRecord& record, const QByteArray& bytes);
    TChoice ChooseNewest(const QString& projectFile, TBackupReason reason) const;
    TChoice ChooseByName(const QString& projectFile, const TRestoreOrder& order) const;

    QString FFolder; // with a trailing delimiter; empty if none was given
    QString FDatabase;
    std::chrono::milliseconds FBusyTimeout;
    mutable std::unique_ptr<TBackupIndex> FIndex;
};

} // namespace Corvadine
