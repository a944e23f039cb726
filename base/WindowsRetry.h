#pragma once

#include <qt_windows.h>

#include <algorithm>

// Calls on files that may fail for a moment while somebody else looks at them.
namespace Corvadine {

using TErrorNumber = DWORD; // of GetLastError()

inline TErrorNumber ErrorUnless(BOOL succeeded)
{
    return succeeded ? ERROR_SUCCESS : ::GetLastError();
}

// What virus scanners, indexers and backup programs cause while they look at a file for a moment.
inline bool MayPass(TErrorNumber error)
{
    switch (error) {
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_ACCESS_DENIED:  // also what a file is answered with that somebody has deleted but still holds
    case ERROR_FILE_NOT_FOUND: // deleted between two of our calls
    case ERROR_USER_MAPPED_FILE:
    case ERROR_UNABLE_TO_REMOVE_REPLACED:
    case ERROR_UNABLE_TO_MOVE_REPLACEMENT:
    case ERROR_UNABLE_TO_MOVE_REPLACEMENT_2:
        return true;
    default:
        return false;
    }
}

// Runs `action`, which returns the number of its error, until it succeeds, for up to `patience` milliseconds.
template <typename TAction> TErrorNumber Persistently(TAction action, DWORD patience = 1000)
{
    constexpr DWORD FirstPause = 5; // ms; each is twice as long as the one before, up to
    constexpr DWORD LongestPause = 320;
    TErrorNumber error = action();
    DWORD waited = 0;
    for (DWORD pause = FirstPause; MayPass(error) && waited + pause <= patience;
         pause = std::min(pause * 2, LongestPause)) {
        ::Sleep(pause);
        waited += pause;
        error = action();
    }
    return error;
}

} // namespace Corvadine
