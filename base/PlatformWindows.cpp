#include "base/Platform.h"

#include <qt_windows.h>

#include <fcntl.h>
#include <io.h>

#include <cstdlib>

namespace Corvadine {

namespace {

UINT ConsoleCodePage = 0; // as we found it; 0 without a console

void RestoreConsole()
{
    ::SetConsoleOutputCP(ConsoleCodePage);
}

} // namespace

void PrepareProcess()
{
    // The C library's streams would turn LF into CR LF; what we print is the same on every system.
    ::_setmode(::_fileno(stdout), _O_BINARY);
    ::_setmode(::_fileno(stderr), _O_BINARY);

    // We print UTF-8. The console is the shell's, too, so it gets its own code page back.
    ConsoleCodePage = ::GetConsoleOutputCP();
    if (ConsoleCodePage != 0 && ConsoleCodePage != CP_UTF8 && ::SetConsoleOutputCP(CP_UTF8))
        std::atexit(RestoreConsole);
}

std::FILE* TakeErrorStream()
{
    const int descriptor = ::_dup(::_fileno(stderr));
    if (descriptor >= 0) // programs that we start need not hold it
        ::SetHandleInformation(HANDLE(::_get_osfhandle(descriptor)), HANDLE_FLAG_INHERIT, 0);
    std::FILE* const stream = descriptor < 0 ? nullptr : ::_fdopen(descriptor, "wb");
    const int nowhere = ::_open("NUL", _O_WRONLY | _O_NOINHERIT);
    if (stream && nowhere >= 0)
        ::_dup2(nowhere, ::_fileno(stderr));
    if (nowhere >= 0)
        ::_close(nowhere);
    return stream;
}

bool ErrorStreamIsTerminal()
{
    DWORD mode = 0; // _isatty() would also take the null device for a terminal
    return ::GetConsoleMode(::GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

} // namespace Corvadine
