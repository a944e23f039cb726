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

// A release that a verified control file has announced. Of two releases with the same version, the withdrawn
// release counts as newer, because a release is offered first and withdrawn later.
struct TKnownRelease {
    TVersion Version {};
    bool IsWithdrawn = false;
    auto operator<=>(const TKnownRelease&) const = default; // NOLINT(modernize-use-nullptr): no pointer here
};

// The right to stage or install an update in a program folder. One process at a time has this right, until
// the object is destroyed or the process ends.
using TUpdateLock = std::unique_ptr<TFileLock>;

// A program folder, and the files that updates keep in the folder:
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
    // The names of these files and folders start with OwnPrefix, except the name of the log. A release may
    // not contain a file whose name starts with OwnPrefix.
    static constexpr QLatin1String OwnPrefix { "CorvadineUpdate." };

    explicit TUpdateFolder(const QString& programFolder);

    // Returns the path of the folder. The path is absolute if the constructor got an absolute path.
    const QString& Path() const { return FPath; }
    QString PathOf(const QString& relative) const { return FPath + u'/' + relative; }
    QString OverrideFile() const { return Own(u"ini"_s); }
    QString OldFiles() const { return Own(u"old"_s); }
    QString DamagedFiles() const { return Own(u"damaged"_s); }

    // Throws TError(Conflict) unless `target` can be put into the program folder without leaving this folder.
    // No folder on the way to `target` may be a link or a file. If `target` exists, it must be a regular
    // file. REQUIRES: CheckedTarget() accepts `target`.
    void CheckTarget(const QString& target) const;

    TUpdateLog Log() const;

    // Returns the newest version that an update has installed, or 0.0.0 if the record is missing or cannot
    // be read.
    TVersion AcceptedVersion() const;

    // Remembers that the release `version` is installed. An older version changes nothing. Call this after
    // all files of the release are in place and before the old files are removed. With an earlier call, the
    // record would be wrong if the installation then failed. Files compared by version would not be offered
    // again. The record is needed because a release may leave the executable as it is. The program then still
    // has its old version, and without the record, files compared by version would be offered again. Throws
    // TError(Io).
    void RecordAcceptedVersion(const QString& version) const;

    // Returns the newest release that a control file has announced. Older releases are refused, even if the
    // newest release was never installed. If the record is missing or cannot be read, returns version 0.0.0.
    TKnownRelease KnownRelease() const;

    // Remembers `release`. An older release changes nothing. Throws TError(Io).
    void RecordKnownRelease(const TKnownRelease& release) const;

    // The report tells the user in plain text how the helper's work ended. WriteReport() ignores failures.
    // TakeReport() returns the report and removes it, or returns an empty text if there is no report.
    void WriteReport(const QString& text) const;
    QString TakeReport() const;

    // Takes the lock. Throws TError(Conflict) if another process has the lock or is handing the lock to the
    // helper. Throws TError(Io) if the folder cannot be written.
    TUpdateLock Lock() const;

    // The helper calls this function to take the lock that the program hands over. Waits up to `patience`
    // while another process has the lock. Throws TError as Lock() does.
    TUpdateLock AwaitLock(std::chrono::milliseconds patience) const;

    // Returns the path of the staging folder. The staging folder lies in the program folder, so a rename
    // moves its files into place.
    QString Staging() const;
    QString StagedFiles() const { return Staging() + u"/files"_s; }
    QString StagedPath(const QString& target) const { return StagedFiles() + u'/' + target; }
    QString Downloads() const { return Staging() + u"/downloads"_s; }

    // Removes the staging folder if it exists. Then makes a new, empty staging folder. Only the owner may
    // look into the folder. On Windows the folder has the permissions of the program folder instead. Throws
    // TError(Io). REQUIRES: the caller has the lock.
    void MakeStaging() const;

    // Removes the staging folder and its content, but not the targets of links. Does nothing if the folder
    // does not exist. Throws TError(Io) if a part of the folder cannot be removed. REQUIRES: the caller has
    // the lock.
    void RemoveStaging() const;

    // Like RemoveStaging(), but ignores failures, because the next check removes the rest. REQUIRES: the
    // caller has the lock.
    void DropStaging() const;

    // Makes a note that the helper is about to take the lock. After the program has released the lock, the
    // note keeps other processes out until the helper has the lock. After a minute the note no longer counts.
    // Throws TError(Io).
    void MarkHandedOver() const;
    // Removes the note of MarkHandedOver().
    void UnmarkHandedOver() const;
    // Returns whether an update was handed over and its staging folder still exists.
    bool IsHandedOver() const;

    // Returns whether a recovery is due, because an installation was cut off or could not put all files back.
    bool IsRecoveryDue() const;

private:
    QString Own(const QString& name) const { return FPath + u'/' + OwnPrefix + name; }
    QString HandOverNote() const { return Staging() + u"/handed-over"_s; }

    QString FPath;
};

} // namespace Corvadine
