#pragma once

#include <QString>

#include <chrono>
#include <system_error>

// Services of the operating system that an update needs and the standard library lacks.
namespace Corvadine {

// Makes the content of a file, or the names in a folder, survive a loss of power. Does nothing for folders on
// Windows, because the file system of Windows keeps the order of renames by itself. Throws TError(Io).
void SyncToDisk(const QString& path);

// Renames a file atomically, and replaces `to` if it exists. Returns the error of a failure. On Windows, a
// virus scanner or the program that has just ended may hold one of the files for a moment. The call then
// tries again for up to five seconds.
std::error_code RenameOver(const QString& from, const QString& to);

// Makes the folder `path`. Only its owner and the system may read and write the folder. On Windows, the owner
// is the group of administrators if the process has the rights of an administrator. Returns an error if the
// folder cannot be made or if `path` exists.
std::error_code MakePrivateFolder(const QString& path);

// Gives `to` the owner and group of `from`, as far as the rights of this process allow. Does nothing on
// Windows, where a file gets its access rights from its folder.
void CopyOwner(const QString& from, const QString& to);

// These functions read and set the read-only mark of Windows, which prevents writing, replacing and removing
// a file. All hard links of a file share the mark. On other systems, IsMarkedReadOnly() returns false and
// MarkReadOnly() does nothing.
bool IsMarkedReadOnly(const QString& path);
void MarkReadOnly(const QString& path, bool isMarked);

// A file that one process at a time can lock. The system ends the lock when the process ends, even if the
// process was killed or ran on another computer. So a lock file that was left behind locks nothing. May be
// used on any thread, by one thread at a time.
class TFileLock {
public:
    explicit TFileLock(const QString& path) : FPath(path) { }
    // Ends the lock and removes the file.
    ~TFileLock();
    Q_DISABLE_COPY_MOVE(TFileLock)

    // Makes the file if it is missing, and locks the file without waiting. Returns
    // std::errc::device_or_resource_busy while another process has the lock, and the system's error after any
    // other failure. REQUIRES: this object has not locked the file.
    std::error_code TryLock();

private:
    QString FPath;
    qintptr FHandle = -1; // the system's handle; -1 while not locked
};

// Waits for the end of another process. Make the object as soon as the number of the process is known. The
// system may later give the number to a new process. The object still stands for the first process. May be
// used on any thread, by one thread at a time.
class TOtherProcess {
public:
    // `executable` is the path of the program that the process runs. On Windows, the number may already
    // belong to a new process. So on Windows the process counts as ended if its program has another file name
    // than `executable`, or if we may not wait for the process.
    TOtherProcess(qint64 processId, const QString& executable);
    ~TOtherProcess();
    Q_DISABLE_COPY_MOVE(TOtherProcess)

    // Waits until the process has ended, and then returns true. Returns true at once if the process had ended
    // before this object was made. Returns false if the process still runs after `limit`.
    bool WaitForEnd(std::chrono::milliseconds limit) const;

private:
    qint64 FProcessId;    // 0 if the process counts as ended
    qintptr FHandle = -1; // the system's handle; -1 if there is none
};

// Returns the absolute path of the program that this process runs, or an empty path if the system does not
// tell the path. Works before there is a QCoreApplication. The first call must be at the start of main(),
// because the system no longer knows the path after an update has replaced the file. Later calls return the
// path of the first call.
QString RunningExecutable();

} // namespace Corvadine
