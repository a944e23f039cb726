#include "support/update/rules/InstallPlatform.h"

#include "base/Error.h"

#include <QFile>

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <thread>

namespace Corvadine {

namespace {

using TClock = std::chrono::steady_clock;

// Waits for the end of a process on kernels that have no process descriptors. Returns false if the process
// still runs at `deadline`.
bool PollForProcessEnd(pid_t process, TClock::time_point deadline)
{
    constexpr std::chrono::milliseconds Pause(50);
    while (::kill(process, 0) == 0 || errno != ESRCH) {
        if (TClock::now() >= deadline)
            return false;
        std::this_thread::sleep_for(Pause);
    }
    return true;
}

bool AwaitDescriptor(int descriptor, TClock::time_point deadline)
{
    for (;;) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - TClock::now()).count();
        pollfd entry { descriptor, POLLIN, 0 };
        const int ready = ::poll(&entry, 1, left > 0 ? static_cast<int>(left) : 0);
        if (ready >= 0 || errno != EINTR)
            return ready > 0;
    }
}

} // namespace

void SyncToDisk(const QString& path)
{
    const int descriptor = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    const bool synced = descriptor >= 0
        && (::fsync(descriptor) == 0 || errno == EINVAL); // EINVAL: the file system cannot sync
    const int errorNumber = errno;
    if (descriptor >= 0)
        ::close(descriptor);
    if (!synced)
        throw TError(
            TErrorKind::Io, u"write"_s, path, SystemErrorText({ errorNumber, std::system_category() }));
}

std::error_code RenameOver(const QString& from, const QString& to)
{
    const bool renamed =
        ::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0;
    return { renamed ? 0 : errno, std::system_category() };
}

std::error_code MakePrivateFolder(const QString& path)
{
    const bool isMade = ::mkdir(QFile::encodeName(path).constData(), S_IRWXU) == 0;
    return { isMade ? 0 : errno, std::system_category() };
}

void CopyOwner(const QString& from, const QString& to)
{
    struct stat status { };
    if (::stat(QFile::encodeName(from).constData(), &status) != 0)
        return;
    const QByteArray path = QFile::encodeName(to);
    constexpr auto Unchanged = static_cast<uid_t>(-1);
    // Only the superuser may change the owner. Every user may set a group to which the user belongs.
    if (::chown(path.constData(), status.st_uid, status.st_gid) != 0) [[maybe_unused]]
        const int ignored = ::chown(path.constData(), Unchanged, status.st_gid);
}

bool IsMarkedReadOnly(const QString& /*path*/)
{
    return false;
}

void MarkReadOnly(const QString& /*path*/, bool /*isMarked*/) { }

TFileLock::~TFileLock()
{
    if (FHandle < 0)
        return;
    ::unlink(QFile::encodeName(FPath).constData()); // while no other process can have the lock
    ::close(static_cast<int>(FHandle));
}

std::error_code TFileLock::TryLock()
{
    const QByteArray path = QFile::encodeName(FPath);
    constexpr mode_t OwnerOnly = 0600; // otherwise every user who may read the file could lock it
    for (;;) {
        const int descriptor = ::open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, OwnerOnly);
        if (descriptor < 0)
            return { errno, std::system_category() };
        if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
            const int errorNumber = errno;
            ::close(descriptor);
            return errorNumber == EWOULDBLOCK ? std::make_error_code(std::errc::device_or_resource_busy)
                                              : std::error_code(errorNumber, std::system_category());
        }
        // The process that had the lock may have removed the file after we opened it. In that case the name
        // stands for a new file or for none, and we must open the file again.
        struct stat locked { };
        struct stat named { };
        if (::fstat(descriptor, &locked) == 0 && ::stat(path.constData(), &named) == 0
            && locked.st_ino == named.st_ino && locked.st_dev == named.st_dev) {
            FHandle = descriptor;
            return {};
        }
        ::close(descriptor);
    }
}

// Uses a pidfd, because the system may give the number of an ended process to a new process. A pidfd always
// stands for the same process. Unlike kill(), a pidfd also reports the end of a process whose parent has not
// waited for it. The C library's pidfd_open() is not used, because its header lacks extern "C" and a C++
// program cannot link it.
TOtherProcess::TOtherProcess(qint64 processId, const QString& /*executable*/)
    : FProcessId(processId), FHandle(::syscall(SYS_pidfd_open, static_cast<pid_t>(processId), 0))
{
    if (FHandle < 0 && errno == ESRCH)
        FProcessId = 0;
}

TOtherProcess::~TOtherProcess()
{
    if (FHandle >= 0)
        ::close(static_cast<int>(FHandle));
}

bool TOtherProcess::WaitForEnd(std::chrono::milliseconds limit) const
{
    const auto deadline = TClock::now() + limit;
    if (FHandle >= 0)
        return AwaitDescriptor(static_cast<int>(FHandle), deadline);
    return FProcessId == 0 || PollForProcessEnd(static_cast<pid_t>(FProcessId), deadline);
}

QString RunningExecutable()
{
    static const QString Executable = [] {
        char path[PATH_MAX];
        const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path);
        return length > 0 ? QFile::decodeName(QByteArray(path, length)) : QString();
    }();
    return Executable;
}

} // namespace Corvadine
