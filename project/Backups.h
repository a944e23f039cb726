#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>

#include <vector>

// The copies that are made of a project file before it is changed. A copy is named after the file and the
// time, so "Demo.dproj" of 5 March 2024, 14:07:09 is kept as "Demo.20240305140709.dproj". Projects of one
// file name share the folder; the ProjectGuid inside the copies tells them apart.
namespace Corvadine {

// The folder for backups, in the data folder.
inline constexpr const char* BackupFolderName = "Project Backups";

struct TBackup {
    QString Name; // without folder
    QString Path;
    QDateTime Time;      // from the name, local
    QString ProjectGuid; // empty if the copy has none or is damaged
    QString Fault;       // why the copy cannot be a project file; empty if it can
};

// Where the backup of `projectFile` made at `time` (local) lies.
QString BackupPath(const QString& projectFile, const QString& backupFolder, const QDateTime& time);

// Keeps `bytes`, the content of `projectFile`, in an existing folder, in place of an older backup of the same
// second. If that one belongs to another project or is among the paths in `kept`, which happens when many of
// one file name are updated in one go, the next second is taken instead. Returns the backup's path. Throws
// TError: Usage if `backupFolder` is empty; Io.
QString WriteBackup(const QString& projectFile, const QByteArray& bytes, const QString& backupFolder,
    const QDateTime& time, const QStringList& kept = {});

// The backups of `projectFile`, oldest first, without those of another project of that file name. While the
// project file is missing or damaged nothing tells them apart, so all are listed.
std::vector<TBackup> ListBackups(const QString& projectFile, const QString& backupFolder);

struct TRestoredBackup {
    QString BackupPath; // what was put back
    QString SavedPath;  // the backup made of the file it replaced; empty if there was none
};

// Puts back the backup called `name`, or the newest one if `name` is empty, byte for byte and in one step.
// Damaged ones are passed over while there are others, and never replace a file that is not damaged itself.
// The file it replaces becomes a backup itself (the newest, so that restoring again undoes this), in the
// first second from `now` on that has none. Throws TError, the project file then being as it was: NotFound if
// there is no such backup; Conflict if it belongs to another project; BadInput if it is damaged; Usage if
// `name` is a path, or is empty while nothing tells whose backup the newest is; Io.
TRestoredBackup RestoreBackup(
    const QString& projectFile, const QString& backupFolder, const QString& name, const QDateTime& now);

} // namespace Corvadine
