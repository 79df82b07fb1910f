// Trying a step on the disk again while its failure is one that passes.
#pragma once

#include <algorithm>
#include <windows.h>

namespace ca::system {

// How long to go on, and how long to pause between two tries: the first pause, doubled
// each time. Milliseconds.
struct RetryTimes {
    DWORD limit;
    DWORD firstPause;
    DWORD longestPause;
};

// Whether whoever has the file open for a moment, such as a scanner, an indexer or another
// thread, makes a step fail like this: access denied, sharing violation, lock violation, delete
// pending, mapped section open.
inline bool isTransient(DWORD error) {
    return error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION ||
           error == ERROR_LOCK_VIOLATION || error == ERROR_DELETE_PENDING ||
           error == ERROR_USER_MAPPED_FILE;
}

// Calls `operation`, which leaves its failure as the thread's last error, until it gives true,
// fails for good, or the time is over. Blocks; any thread.
template <typename Operation>
bool withRetries(const RetryTimes& times, Operation operation) {
    const ULONGLONG begin = ::GetTickCount64();
    for (DWORD pause = times.firstPause;; pause = std::min(2 * pause, times.longestPause)) {
        if (operation()) {
            return true;
        }
        const DWORD error = ::GetLastError();
        if (!isTransient(error) || ::GetTickCount64() - begin + pause > times.limit) {
            return false;
        }
        ::Sleep(pause);
    }
}

} // namespace ca::system
