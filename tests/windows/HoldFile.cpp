// Holds a file open as programs do that let nobody else write: HoldFile FILE. Says "held", and lets go when
// its own input ends.

#include <windows.h>

#include <cstdio>

int main(int argc, char** argv)
{
    const HANDLE file = argc < 2
        ? INVALID_HANDLE_VALUE
        : ::CreateFileA(argv[1], GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return 1;
    std::puts("held");
    std::fflush(stdout);
    while (std::getchar() != EOF) { }
    ::CloseHandle(file);
    return 0;
}
