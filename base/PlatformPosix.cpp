#include "base/Platform.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <csignal>

namespace Corvadine {

void PrepareProcess()
{
    std::signal(SIGXFSZ, SIG_IGN);
}

std::FILE* TakeErrorStream()
{
    const int descriptor = ::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    std::FILE* const stream = descriptor < 0 ? nullptr : ::fdopen(descriptor, "w");
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (stream && nowhere >= 0)
        ::dup2(nowhere, STDERR_FILENO);
    if (nowhere >= 0)
        ::close(nowhere);
    return stream;
}

bool ErrorStreamIsTerminal()
{
    return ::isatty(STDERR_FILENO) == 1;
}

void PreferLargePages(void* memory, std::size_t bytes)
{
#ifdef MADV_HUGEPAGE
    ::madvise(memory, bytes, MADV_HUGEPAGE); // a kernel without large pages refuses
#endif
}

} // namespace Corvadine
