#pragma once

#include "support/update/rules/StagedUpdate.h"

#include <QString>

#include <functional>
#include <utility>

namespace Corvadine {

// What RecoverUpdate() found and did.
enum class TRecovery {
    NotNeeded,
    Undone,         // the old files are back
    Completed,      // all new files were in place already
    BeingInstalled, // nothing was done, because another process is at work
};

// Puts a staged update into place: all of its files or none.
//
// First the files to be replaced are kept in the folder CorvadineUpdate.old, with a journal of the steps that
// follow. Then the new files are renamed over the old ones, so that a file exists under each name at all
// times. The executable comes last, because the old program can undo a replacement that was cut off. Renaming
// the journal settles the update: from then on nothing is undone, even if files change. A process that is
// killed before that leaves the journal. Recover() then undoes the replacement, or completes it if all new
// files are in place. Each step is synced before the next step relies on it. The program's data are never
// touched, because CheckedTarget() refuses their names.
//
// May be used on any thread, by one thread at a time. REQUIRES: the caller has the folder's TUpdateLock.
class TUpdateInstaller {
public:
    explicit TUpdateInstaller(TUpdateFolder folder) : FFolder(std::move(folder)) { }

    // Calls Recover(), verifies size and SHA-256 of every staged file once more, replaces the files, and
    // records the accepted version. If the record cannot be written, the next Recover() writes it. All steps
    // go to the log. A new file gets the permissions and, where allowed, the owner of the file it replaces.
    // Removes the staging folder in any case. `executable` is the absolute path of the program, which need
    // not be among the files. Throws TError; the old files are then back in place. If they could not be put
    // back, the text says so, and the next Recover() tries again.
    void Install(const TStagedUpdate& update, const QString& executable);

    // Undoes or completes an Install() that was killed or could not put all files back; otherwise does
    // nothing. Throws TError when files cannot be put back; the journal stays for the next try. Throws
    // TError(BadInput) for a journal that makes no sense; the old files are then moved to
    // CorvadineUpdate.damaged, and no further try is made.
    TRecovery Recover();

    // For tests. Called before each step; if it throws, the step fails.
    std::function<void(const QString& step)> BeforeStep;

private:
    class TReplacement;

    void Replace(const TStagedUpdate& update, const QString& executable);

    TUpdateFolder FFolder;
};

// Recovery at the start of the program, before it loads anything that an update may have replaced. If there
// is nothing to do, only tests whether two files exist. If this returns BeingInstalled, the caller must end:
// the helper may be about to replace the program, and starts it again afterwards. Throws TError as Recover()
// does, after writing to the log.
TRecovery RecoverUpdate(const TUpdateFolder& folder);

} // namespace Corvadine
