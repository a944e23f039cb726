#pragma once

#include "support/update/rules/StagedUpdate.h"

#include <QString>

#include <functional>
#include <utility>

namespace Corvadine {

// The result of Recover() and RecoverUpdate().
enum class TRecovery {
    NotNeeded,
    Undone,         // the old files are back
    Completed,      // all new files were in place already
    BeingInstalled, // nothing was done, because another process installs an update
};

// Puts either all files of a staged update into place, or none.
//
// First the old files are kept in the folder CorvadineUpdate.old, with a journal of the following steps. Then
// the new files are renamed over the old files, so that a file exists under each name at all times. The
// executable comes last, because the old program can undo a replacement that was cut off. At the end a rename
// of the journal settles the update. A settled update is never undone, even if files change. If the process
// is killed before the update is settled, the journal stays. Recover() then undoes the replacement, or
// completes it if all new files are in place. Each step is synced to disk before the next step relies on it.
// The program's data are never touched, because CheckedTarget() refuses their names.
//
// May be used on any thread, by one thread at a time. REQUIRES: the caller has the folder's TUpdateLock.
class TUpdateInstaller {
public:
    explicit TUpdateInstaller(TUpdateFolder folder) : FFolder(std::move(folder)) { }

    // Calls Recover(), verifies size and SHA-256 of every staged file once more, replaces the files, and
    // records the accepted version. If the record cannot be written, the next Recover() writes it. All steps
    // go to the log. A new file gets the permissions and, where allowed, the owner of the old file. Always
    // removes the staging folder. `executable` is the absolute path of the program, which need not be among
    // the files. After a failure, puts the old files back and throws TError. If an old file could not be put
    // back, the error text tells this, and the next Recover() tries again.
    void Install(const TStagedUpdate& update, const QString& executable);

    // Undoes or completes an Install() that was killed or could not put all files back. Does nothing if there
    // is no such Install(). Returns what was done. If files cannot be put back, throws TError and keeps the
    // journal for the next try. If the journal makes no sense, moves the old files to CorvadineUpdate.damaged
    // and throws TError(BadInput). No further try is made in this case.
    TRecovery Recover();

    // For tests. This function is called before each step. If it throws, the step fails.
    std::function<void(const QString& step)> BeforeStep;

private:
    class TReplacement;

    void Replace(const TStagedUpdate& update, const QString& executable);

    TUpdateFolder FFolder;
};

// Takes the lock and calls Recover(). The program calls this at its start, before it loads anything that an
// update may have replaced. If there is nothing to do, only tests whether two files exist. If the result is
// BeingInstalled, the caller must end the program, because the helper may be about to replace it. The helper
// starts the program again afterwards. Throws TError as Recover() does, after writing to the log.
TRecovery RecoverUpdate(const TUpdateFolder& folder);

} // namespace Corvadine
