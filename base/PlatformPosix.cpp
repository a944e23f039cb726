#include "base/Platform.h"

#include <unistd.h>

#include <csignal>

namespace Corvadine {

void PrepareProcess()
{
    std::signal(SIGXFSZ, SIG_IGN);
}

bool ErrorStreamIsTerminal()
{
    return ::isatty(STDERR_FILENO) == 1;
}

} // namespace Corvadine
