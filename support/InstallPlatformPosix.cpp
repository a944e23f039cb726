#include "support/InstallPlatform.h"

#include "base/Error.h"

#include <QFile>

#include <fcntl.h>
#include <poll.h>
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

// For kernels that cannot give a descriptor of a process.
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
        && (::fsync(descriptor) == 0 || errno == EINVAL); // EINVAL: a file system that has no sync
    const int errorNumber = errno;
    if (descriptor >= 0)
        ::close(descriptor);
    if (!synced)
        throw TError(TErrorKind::Io, QStringLiteral("write"), path,
            SystemErrorText({ errorNumber, std::system_category() }));
}

std::error_code RenameOver(const QString& from, const QString& to)
{
    const bool renamed =
        ::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0;
    return { renamed ? 0 : errno, std::system_category() };
}

bool WaitForProcessEnd(qint64 processId, std::chrono::milliseconds limit)
{
    const auto deadline = TClock::now() + limit;
    const auto process = static_cast<pid_t>(processId);
    // A descriptor means this very process, also if its number is given to another one meanwhile; and it
    // tells the end of a process that its parent has not asked after yet.
    const auto descriptor = static_cast<int>(::syscall(SYS_pidfd_open, process, 0)); // no wrapper for C++
    if (descriptor < 0)
        return errno == ESRCH || PollForProcessEnd(process, deadline);
    const bool ended = AwaitDescriptor(descriptor, deadline);
    ::close(descriptor);
    return ended;
}

QString RunningExecutable()
{
    char path[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path);
    return length > 0 ? QFile::decodeName(QByteArray(path, length)) : QString();
}

} // namespace Corvadine
