#pragma once

#include "base/Files.h"
#include "store/BackupIndex.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

// Copies of project files, made before the files are changed. The name of a copy contains the time: a copy of
// "Demo.dproj" made on 5 March 2024, 14:07:09 is "Demo.20240305140709.dproj". Projects with the same file
// name share the folder. The index in the project database tells which project each copy belongs to.
namespace Corvadine {

struct TBackup {
    QString Name; // without folder
    QString Path;
    QDateTime Time; // of the last record of this content; without a record, the time in the name
    std::optional<TBackupReason> Reason; // of the same record; none without a record
    QString Fault;                       // why a recorded copy is damaged; empty if the copy is whole
};

// Which backup is restored, and at what time.
struct TRestoreOrder {
    QString Name {};       // empty: the newest backup made by an update
    bool IsUndo = false;   // without a name: the newest backup made by a restore
    bool IsForced = false; // with a name: even if damaged, of another project or unrecorded
    QDateTime Now {};      // local time
};

struct TRestoredBackup {
    QString BackupPath; // the backup that was restored
    QString SavedPath;  // the backup of the old content; empty if there was no file or nothing was written
    bool IsWritten = false; // false: the project file had this content already
};

// Whether content gets a new copy if there is an equal copy already.
enum class TKeep {
    Once,   // no new copy: the equal copy gets a further record
    Always, // a new copy; it replaces a copy of the same project, made in the same second
};

// The backups of one data folder. Several programs may use the folder at once. No copy ever replaces another
// copy, except with TKeep::Always. Paths of project files are full paths. Use on one thread.
class TBackups {
public:
    // `folder` need not exist. `database` is the path of the project database, which is opened when it is
    // first needed. If another program has locked the database, a function waits for at most `busyTimeout`.
    TBackups(const QString& folder, const QString& database,
        std::chrono::milliseconds busyTimeout = std::chrono::seconds(5));
    ~TBackups();
    TBackups(const TBackups&) = delete;
    TBackups& operator=(const TBackups&) = delete;

    // Keeps `bytes`, the content of `projectFile`, and records the copy. The copy's name contains `time`
    // (local). If that name is taken, a later second takes the place of `time`: the first with a free name. A
    // missing folder is created. Returns the copy's path. Throws TError(Usage) if the folder's name is empty,
    // and TError(Io) if a file or the database fails. A process that is killed never leaves a new copy
    // without a record.
    QString Keep(const QString& projectFile, const QByteArray& bytes, const QDateTime& time,
        TBackupReason reason, TKeep keep = TKeep::Once);

    // Keeps `bytes` in a new copy without a record, for use when the database cannot be written. Chooses the
    // name as Keep() does, and creates a missing folder. Returns the copy's path. Throws TError(Usage) if the
    // folder's name is empty, and TError(Io).
    QString KeepUnrecorded(const QString& projectFile, const QByteArray& bytes, const QDateTime& time);

    // Returns the copies recorded for this path, and the copies without a record that are named after the
    // file. The oldest copy comes first. Throws TError(Io).
    std::vector<TBackup> List(const QString& projectFile) const;

    // Restores a backup byte for byte and in one step. Keeps the present project file in a new backup first.
    // If the project file is gone, the new file gets the access rights of the backup. When this throws, the
    // project file is unchanged. Throws TError of these kinds:
    // - Io: there is no such backup, or a file or the database fails.
    // - Usage: the backup's name is a path, or the folder's name is empty.
    // - Conflict: another program changes the project file meanwhile. Or, unless IsForced: the backup has no
    //   record, or its record has another path or content.
    // - BadInput, unless IsForced: the backup is no project file.
    TRestoredBackup Restore(const QString& projectFile, const TRestoreOrder& order);

    // Removes the recorded copies of this path that are older than the `kept` newest whole copies. Returns
    // the names of the removed copies. Copies without a record stay. Throws TError(Io) at the first copy that
    // cannot be removed, or if the database fails. REQUIRES: kept > 0.
    QStringList Prune(const QString& projectFile, int kept);

private:
    struct TChoice;

    TBackupIndex& Index() const;
    TNewFolder NewFolder() const;
    QString PathOf(const QString& name) const;
    QString EqualCopy(const TBackupRecord& record) const;
    bool IsOfThisSecond(const TBackupRecord& record) const;
    bool WriteRecorded(const TBackupRecord& record, const QByteArray& bytes);
    TChoice ChooseNewest(const QString& projectFile, TBackupReason reason) const;
    TChoice ChooseByName(const QString& projectFile, const TRestoreOrder& order) const;

    QString FFolder; // with a trailing delimiter; empty if none was given
    QString FDatabase;
    std::chrono::milliseconds FBusyTimeout;
    mutable std::unique_ptr<TBackupIndex> FIndex;
};

} // namespace Corvadine
