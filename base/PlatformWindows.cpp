#include "base/Platform.h"

#include <qt_windows.h>

#include <fcntl.h>
#include <io.h>

#include <cstdint>
#include <cstdlib>

namespace Corvadine {

namespace {

UINT ConsoleCodePage = 0; // the code page before we changed it; 0 without a console

void RestoreConsole()
{
    ::SetConsoleOutputCP(ConsoleCodePage);
}

// Returns a new stream to the file of `handle`, or null if the system refuses. Programs that we start do not
// inherit the stream.
std::FILE* StreamTo(HANDLE handle)
{
    const HANDLE process = ::GetCurrentProcess();
    HANDLE copy = nullptr;
    if (!::DuplicateHandle(process, handle, process, &copy, 0, FALSE, DUPLICATE_SAME_ACCESS))
        return nullptr;
    const int descriptor = ::_open_osfhandle(reinterpret_cast<std::intptr_t>(copy), _O_WRONLY | _O_BINARY);
    if (descriptor < 0)
        ::CloseHandle(copy);
    return descriptor < 0 ? nullptr : ::_fdopen(descriptor, "wb");
}

} // namespace

void PrepareProcess()
{
    // In text mode the C library would print CR LF for LF. Our output is the same on every system.
    ::_setmode(::_fileno(stdout), _O_BINARY);
    ::_setmode(::_fileno(stderr), _O_BINARY);

    // We print UTF-8. The shell uses the same console after us, so its code page is restored.
    ConsoleCodePage = ::GetConsoleOutputCP();
    if (ConsoleCodePage != 0 && ConsoleCodePage != CP_UTF8 && ::SetConsoleOutputCP(CP_UTF8))
        std::atexit(RestoreConsole);
}

std::FILE* TakeErrorStream()
{
    std::FILE* const stream = StreamTo(::GetStdHandle(STD_ERROR_HANDLE));
    const int nowhere = ::_open("NUL", _O_WRONLY | _O_NOINHERIT);
    if (stream && nowhere >= 0)
        ::_dup2(nowhere, ::_fileno(stderr));
    if (nowhere >= 0)
        ::_close(nowhere);
    return stream;
}

bool ErrorStreamIsTerminal()
{
    DWORD mode = 0; // _isatty() is true for the null device, too
    return ::GetConsoleMode(::GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

// Large pages need a right that users do not have.
void PreferLargePages(void*, std::size_t) { }

} // namespace Corvadine
