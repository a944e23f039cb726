// Holds a file open so that no other program can write to it: HoldFile FILE. Prints "held", and closes the
// file when its standard input ends.

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
