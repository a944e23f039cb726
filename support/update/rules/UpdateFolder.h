#pragma once

#include "base/Literals.h"
#include "support/update/rules/InstallPlatform.h"
#include "support/update/rules/UpdateLog.h"
#include "support/update/rules/Version.h"

#include <QString>

#include <chrono>
#include <compare>
#include <memory>

namespace Corvadine {

// A release that a verified control file has announced. Of two with the same version, the withdrawn release
// counts as newer, because a release is offered first and withdrawn later.
struct TKnownRelease {
    TVersion Version {};
    bool IsWithdrawn = false;
    auto operator<=>(const TKnownRelease&) const = default; // NOLINT(modernize-use-nullptr): no pointer here
};

// The right to stage or install an update in a program folder. One process at a time has this right, until
// the object is destroyed or the process ends.
using TUpdateLock = std::unique_ptr<TFileLock>;

// A program folder, and all that updates keep in it:
//     CorvadineUpdate.ini             an administrator's URL and key
//     CorvadineUpdate.accepted        the newest version that was installed
//     CorvadineUpdate.known           the newest release that a control file has announced
//     CorvadineUpdate.lock            locked while a process stages or installs
//     CorvadineUpdate.report          the helper's result, until the user has seen it
//     CorvadineUpdate.old/            the files that are being replaced; see UpdateInstaller.h
//     CorvadineUpdate.damaged/        CorvadineUpdate.old, if a recovery could not read its journal
//     CorvadineUpdate.staging/        the download; see StagedUpdate.h for the control file in it
//         files/TARGET                each file of the update under its name in the program folder
//         downloads/                  the packages, while a download runs
//         handed-over                 exists from the moment the helper is asked to install the update
//     WUPDATE.LOG                     the log
// The object is a value that holds only the path. May be used on any thread, by one thread at a time.
class TUpdateFolder {
public:
    // The names above that belong to updates start with this, except the log's. A release may not contain a
    // file whose name starts so.
    static constexpr QLatin1String OwnPrefix { "CorvadineUpdate." };

    explicit TUpdateFolder(const QString& programFolder);

    // Absolute if the path given to the constructor was absolute.
    const QString& Path() const { return FPath; }
    QString PathOf(const QString& relative) const { return FPath + u'/' + relative; }
    QString OverrideFile() const { return Own(u"ini"_s); }
    QString OldFiles() const { return Own(u"old"_s); }
    QString DamagedFiles() const { return Own(u"damaged"_s); }

    // Throws TError(Conflict) unless `target` can be put into the program folder without leaving it. No
    // folder on its way may be a link or a file. If the target exists, it must be a regular file and no link.
    // REQUIRES: CheckedTarget() accepts `target`.
    void CheckTarget(const QString& target) const;

    TUpdateLog Log() const;

    // The newest version that an update has installed; 0.0.0 when the record is missing or unreadable.
    TVersion AcceptedVersion() const;

    // Remembers that the release `version` is installed; an older version changes nothing. Call it after all
    // files of the release are in place and before the old ones are removed. If it were called before that,
    // and the installation then failed, files compared by version would not be offered again. If it were not
    // called, files compared by version would be offered again after a release that does not replace the
    // executable, because the program's own version would still be the old one. Throws TError(Io).
    void RecordAcceptedVersion(const QString& version) const;

    // The newest release that a control file has announced. Older releases are refused, even if the newest
    // one was never installed. Version 0.0.0 when the record is missing or unreadable.
    TKnownRelease KnownRelease() const;

    // Remembers `release`; an older release changes nothing. Throws TError(Io).
    void RecordKnownRelease(const TKnownRelease& release) const;

    // How the helper's work ended, as plain text for the user. WriteReport() ignores failures. TakeReport()
    // also removes the report, and returns an empty text if there is none.
    void WriteReport(const QString& text) const;
    QString TakeReport() const;

    // Takes the lock. Throws TError: Conflict when another process has the lock or is handing it to the
    // helper; Io when the folder cannot be written.
    TUpdateLock Lock() const;

    // Takes the lock for the helper, although the lock is being handed over. Waits up to `patience` while
    // another process has the lock. Throws TError as Lock() does.
    TUpdateLock AwaitLock(std::chrono::milliseconds patience) const;

    // The staging folder lies in the program folder, so that renaming moves its files into place.
    QString Staging() const;
    QString StagedFiles() const { return Staging() + u"/files"_s; }
    QString StagedPath(const QString& target) const { return StagedFiles() + u'/' + target; }
    QString Downloads() const { return Staging() + u"/downloads"_s; }

    // Makes an empty staging folder, after removing an existing one. Only the owner may look into the folder;
    // on Windows the folder has the permissions of the program folder instead. Throws TError(Io). REQUIRES:
    // the caller has the lock.
    void MakeStaging() const;

    // Removes the staging folder and its content, but not the targets of links. Does nothing if the folder
    // does not exist. Throws TError(Io) when a part of the folder stays. REQUIRES: the caller has the lock.
    void RemoveStaging() const;

    // Like RemoveStaging(), but ignores failures: the next check removes the rest. REQUIRES: the caller has
    // the lock.
    void DropStaging() const;

    // Makes a note that the helper is about to take the lock. After the program has released the lock, the
    // note keeps other processes out until the helper has the lock, for a minute at most. Throws TError(Io).
    void MarkHandedOver() const;
    // Removes the note of MarkHandedOver().
    void UnmarkHandedOver() const;
    // Whether an update was handed over and its staging folder is still there.
    bool IsHandedOver() const;

    // Whether a recovery is due, because an installation was cut off or could not put all files back.
    bool IsRecoveryDue() const;

private:
    QString Own(const QString& name) const { return FPath + u'/' + OwnPrefix + name; }
    QString HandOverNote() const { return Staging() + u"/handed-over"_s; }

    QString FPath;
};

} // namespace Corvadine
