#pragma once

#include <QString>

#include <chrono>
#include <system_error>

// What the installing of an update asks of the operating system beyond the standard library.
namespace Corvadine {

// Makes the content of a file, or the names in a folder, survive a loss of power. Throws TError(Io). Does
// nothing for a folder where the file system keeps the order of renames by itself.
void SyncToDisk(const QString& path);

// Renames a file, over another one if there is one, in one step. Waits up to a second for programs that look
// at one of the two for a moment.
std::error_code RenameOver(const QString& from, const QString& to);

// Gives `to` the owner and group of `from`, as far as this process may give files away. Does nothing where a
// folder decides that.
void CopyOwner(const QString& from, const QString& to);

// Windows' mark that keeps a file from being written, replaced and removed, and that all names of the file
// share. Where permissions stand in the way of none of these there is no such mark, and nothing to set.
bool IsMarkedReadOnly(const QString& path);
void MarkReadOnly(const QString& path, bool isMarked);

// A file that one process at a time has locked. The system itself ends the lock with its process, a killed
// one and one of another computer too, so that a file that stayed behind keeps nobody out. No thread rule.
class TFileLock {
public:
    explicit TFileLock(const QString& path) : FPath(path) { }
    // Gives the lock up, and removes the file.
    ~TFileLock();
    Q_DISABLE_COPY_MOVE(TFileLock)

    // Makes the file if need be and locks it, at once or not at all: std::errc::device_or_resource_busy while
    // another one has the lock, anything else is what the system has against the file. REQUIRES: not locked.
    std::error_code TryLock();

private:
    QString FPath;
    qintptr FHandle = -1; // of the system
};

// Waits until the process has ended; true at once if there is none of that number, false if it still runs
// after `limit`.
bool WaitForProcessEnd(qint64 processId, std::chrono::milliseconds limit);

// The absolute path of the program that this process runs, as it was at the first call: once an update has
// replaced the file, the system knows no name of the old one. So ask at the start of main(); it works before
// there is a QCoreApplication. Empty if the system does not tell.
QString RunningExecutable();

} // namespace Corvadine
