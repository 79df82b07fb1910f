#include "processes/observed_process.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <poll.h>

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds;

// For poll: never negative, which would wait without end.
int millisecondsUntil(Clock::time_point deadline) {
    const auto left = std::chrono::ceil<Milliseconds>(deadline - Clock::now());
    return static_cast<int>(std::clamp<long long>(left.count(), 0, INT32_MAX));
}

} // namespace

using namespace ca::win32;

DWORD WaitForSingleObject(HANDLE process, DWORD milliseconds) {
    const auto* observed = objectOf<ObservedProcess>(process);
    if (observed == nullptr) {
        return WAIT_FAILED;
    }
    const Clock::time_point deadline = Clock::now() + Milliseconds(milliseconds);
    // A signal ends poll early; the wait then goes on for what is left of it.
    for (;;) {
        pollfd entry{observed->descriptor(), POLLIN, 0};
        const int ready = ::poll(&entry, 1, millisecondsUntil(deadline));
        if (ready > 0) {
            return WAIT_OBJECT_0;
        }
        if (ready == 0) {
            return WAIT_TIMEOUT;
        }
        if (errno != EINTR) {
            fail(errorFromErrno(errno));
            return WAIT_FAILED;
        }
    }
}
