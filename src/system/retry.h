// Trying steps on the disk again while their failure is one that passes.
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

// Patience for several steps: the limit holds for all of them together, from the object's making
// on. Each is tried at least once. Belongs to one thread.
class Patience {
public:
    explicit Patience(const RetryTimes& times) : times_(times), begin_(::GetTickCount64()) {}

    // Calls `operation`, which leaves its failure as the thread's last error, until it returns
    // true, fails for good, or the time is over. Blocks.
    template <typename Operation>
    bool retry(Operation operation) const {
        DWORD pause = times_.firstPause;
        while (!operation()) {
            const DWORD error = ::GetLastError();
            if (!isTransient(error) || ::GetTickCount64() - begin_ + pause > times_.limit) {
                return false;
            }
            ::Sleep(pause);
            pause = std::min(2 * pause, times_.longestPause);
        }
        return true;
    }

private:
    RetryTimes times_;
    ULONGLONG begin_;
};

// The same for one step.
template <typename Operation>
bool withRetries(const RetryTimes& times, Operation operation) {
    return Patience(times).retry(operation);
}

} // namespace ca::system
