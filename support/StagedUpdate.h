#pragma once

#include "support/FileHash.h"
#include "support/InstallPlatform.h"
#include "support/UpdateSettings.h"
#include "support/UpdateTypes.h"

#include <QString>
#include <QStringList>

#include <chrono>

namespace Corvadine {

// The staging folder is CorvadineUpdate.staging in the program folder, so that renaming moves files out of
// it. Only its owner may look into it where permissions do not move along with a file; on Windows it has
// those of the program folder. It holds
//     Corvadine.INF, Corvadine.INF.sig   the control file as it was verified
//     chosen                             the targets to be installed, one a line
//     files/TARGET                       each file of the update under its relative name
//     downloads/                         while a download runs
//     handed-over                        once the helper is going to install it
// Whoever installs a staged update may add names of its own to the folder, and syncs what it relies on: the
// engine leaves that to the system, since a download that is lost can be repeated.

// The right to stage or install an update in a program folder: one process at a time has it. It ends with
// the object or with the process. Not movable; no thread rule.
class TUpdateLock {
public:
    // Throws TError: Conflict when another process has it, or hands it to the helper at this moment; Io when
    // the folder cannot be written.
    explicit TUpdateLock(const QString& programFolder);

    // For the helper, which it is handed to: waits for who has it, and while the folder seems
    // closed, for up to `patience`.
    TUpdateLock(const QString& programFolder, std::chrono::milliseconds patience);

private:
    TFileLock FLock;
};

// Notes in the staging folder that the helper is about to take over what is in it. There is a moment in which
// the program has given up the TUpdateLock and the helper does not have it yet: until it has, and for a
// minute at most, should it never come, the note keeps others out. Throws TError(Io).
void MarkHandedOver(const QString& programFolder);

// Whether an update was handed over and has not ended, or nobody has cleaned up after it.
bool IsHandedOver(const QString& programFolder);

// Takes the note back when the helper could not be started.
void UnmarkHandedOver(const QString& programFolder);

// Absolute path of the staging folder of a program folder, whether it exists or not.
QString StagingFolderOf(const QString& programFolder);

// Absolute path of the folder inside it that holds the files of the update.
QString StagedFilesFolderOf(const QString& programFolder);

// Writes the verified control file, its signature and the chosen targets into the staging folder, which
// exists. Throws TError(Io).
void StageControlFile(const QString& programFolder, const QByteArray& bytes, const QByteArray& signature,
    const QStringList& chosen);

// Removes the staging folder and all that is in it, links not followed; does nothing if there is none.
// Throws TError(Io) when something of it stays. REQUIRES: the caller has the TUpdateLock.
void RemoveStaging(const QString& programFolder);

// The update that waits in the staging folder of `settings.ProgramFolder`, trusting nothing of it: the
// signature of its control file is verified again, its version must not be older than anything accepted
// (see NewestAcceptedVersion), every file must be one that the control file names for this platform, with the
// size and hash stated there, and none may be a link. All chosen files must be there and no others, and among
// them every mandatory one that is newer: half a release would be recorded as a whole one. For the helper,
// which takes over from a process that has ended. Throws TError; the folder is left as it is.
TStagedUpdate ReadStagedUpdate(const TUpdateSettings& settings);

} // namespace Corvadine
