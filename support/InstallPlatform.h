#pragma once

#include <QString>

#include <chrono>
#include <system_error>

// What the installing of an update asks of the operating system beyond the standard library.
namespace Corvadine {

// Makes the content of a file, or the names in a folder, survive a loss of power. Throws TError(Io). Does
// nothing for a folder where the file system keeps the order of renames by itself.
void SyncToDisk(const QString& path);

// Renames a file, over another one if there is one, in one step. Waits up to five seconds for programs that
// look at one of the two for a moment, and for one that has just ended and whose file this was.
std::error_code RenameOver(const QString& from, const QString& to);

// Makes the folder `path`, into which nobody but its owner may look or put something; on Windows that is the
// administrators' group for a process with their rights. An error if there is anything of that name.
std::error_code MakePrivateFolder(const QString& path);

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

// Another process, to wait for its end. Systems use the number of a process that has ended again, so this is
// to be made as soon as the number is known: from then on it means this very process. No thread rule.
class TOtherProcess {
public:
    // `executable` is the path of the program that it runs. Windows is quick to use numbers again; there a
    // process whose program has another file name counts as ended, and so does one that we may not wait for.
    TOtherProcess(qint64 processId, const QString& executable);
    ~TOtherProcess();
    Q_DISABLE_COPY_MOVE(TOtherProcess)

    // Waits until it has ended, at once if there never was one; false if it still runs after `limit`.
    bool WaitForEnd(std::chrono::milliseconds limit) const;

private:
    qint64 FProcessId;    // 0 if there is none
    qintptr FHandle = -1; // of the system
};

// The absolute path of the program that this process runs, as it was at the first call: once an update has
// replaced the file, the system knows no name of the old one. So ask at the start of main(); it works before
// there is a QCoreApplication. Empty if the system does not tell.
QString RunningExecutable();

} // namespace Corvadine
