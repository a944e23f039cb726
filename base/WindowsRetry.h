#pragma once

#include <qt_windows.h>

#include <algorithm>

// Repeats calls on files that fail while another program has the file open for a moment.
namespace Corvadine {

using TErrorNumber = DWORD; // of GetLastError()

inline TErrorNumber ErrorUnless(BOOL succeeded)
{
    return succeeded ? ERROR_SUCCESS : ::GetLastError();
}

// Whether a call that failed with `error` may succeed later. The cause is then another program, such as a
// virus scanner, that was using the file or has deleted it.
inline bool MayPass(TErrorNumber error)
{
    switch (error) {
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_ACCESS_DENIED:  // also for a file that is deleted, but still open in another program
    case ERROR_FILE_NOT_FOUND: // another program deleted the file after we had found it
    case ERROR_USER_MAPPED_FILE:
    case ERROR_UNABLE_TO_REMOVE_REPLACED:
    case ERROR_UNABLE_TO_MOVE_REPLACEMENT:
    case ERROR_UNABLE_TO_MOVE_REPLACEMENT_2:
        return true;
    default:
        return false;
    }
}

// Repeats `action` while it returns an error that may pass, for up to `patience` milliseconds. Returns the
// last error.
template <typename TAction> TErrorNumber Persistently(TAction action, DWORD patience = 1000)
{
    constexpr DWORD FirstPause = 5; // ms; every further pause is twice as long
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
