#pragma once

#include "support/UpdateTypes.h"

#include <QString>

#include <functional>

namespace Corvadine {

class TUpdateLog;

// What RecoverUpdate() found and did.
enum class TRecovery {
    NotNeeded,
    Undone,         // the old files are back
    Completed,      // all new files had been in place already
    BeingInstalled, // nothing: another process is at work
};

// Puts a staged update into place: all of its files or none.
//
// The files to be replaced are first kept in the folder CorvadineUpdate.old of the program folder, with a
// journal that says what is going to happen. Only then the new files are renamed over them, one after the
// other, so that there is no moment without a file under its name; the executable comes last. Giving the
// journal its final name then settles it: from there on nothing is undone, whatever becomes of the files. A
// process that is killed on the way leaves the journal, and Recover() then undoes the replacement, or
// completes it if only the end was missing. Everything is synced before the next step relies on it. The
// program's data are never touched: CheckedTarget() refuses their names.
//
// REQUIRES: the caller has the TUpdateLock of the program folder. No thread rule.
class TUpdateInstaller {
public:
    // Reports what it does to `log`, which must live longer.
    TUpdateInstaller(const QString& programFolder, const TUpdateLog& log);

    // Recovers first if need be, verifies size and SHA-256 of every staged file once more, replaces, records
    // the accepted version (or leaves that to the next Recover(), should it fail), and removes the staging
    // folder. A replaced file's permissions and, where allowed, owner are kept.
    // `executable` is the absolute path of the program itself, whether it is among the files or not.
    // Throws TError; the old files are then back in place, or, where even that failed, the text says so and
    // the next Recover() tries again. The staging folder is removed in any case.
    void Install(const TStagedUpdate& update, const QString& executable);

    // Ends what a killed Install() has begun; does nothing if there is no such thing. Throws TError when
    // files cannot be put back; the journal then stays for the next try, unless it cannot be understood: then
    // the old files are set aside in CorvadineUpdate.damaged, and no further try is made.
    TRecovery Recover();

    // For tests, called before each step; what it throws fails that step.
    std::function<void(const QString& step)> BeforeStep;

private:
    class TReplacement;

    void Replace(const TStagedUpdate& update, const QString& executable);

    QString FProgramFolder;
    const TUpdateLog& FLog;
};

// Whether an Install() was cut off, or could not put everything back, so that a recovery has something to do.
bool IsRecoveryDue(const QString& programFolder);

// Recovery for the start of the program, before it loads anything that an update may have replaced: one test
// or two of existence when there is nothing to do. At BeingInstalled the caller must end: it may be a program
// that is going to be replaced, and the one that replaces it starts it again. Throws TError as Recover()
// does, once the log has been told.
TRecovery RecoverUpdate(const QString& programFolder);

// RemoveStaging() for when an update is over, one way or the other: what cannot be removed now is removed by
// the next check. REQUIRES: the caller has the TUpdateLock.
void DropStaging(const QString& programFolder);

} // namespace Corvadine
