#include "helper/wait.h"

#include <algorithm>

namespace ca::helper {

namespace {

constexpr DWORD clockDoubt = 3000; // milliseconds

// 100-nanosecond steps since 1601; 0 when the system doesn't tell.
unsigned long long startTime(HANDLE process) {
    FILETIME created{};
    FILETIME unused{};
    if (!::GetProcessTimes(process, &created, &unused, &unused, &unused)) {
        return 0;
    }
    return static_cast<unsigned long long>(created.dwHighDateTime) << 32 | created.dwLowDateTime;
}

} // namespace

bool waitForEnd(DWORD processId, DWORD limit) {
    const HANDLE process =
        ::OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, processId);
    // none, or somebody else's: a launcher can always be opened by the helper that it starts
    if (!process) {
        return ::GetLastError() == ERROR_INVALID_PARAMETER ||
               ::GetLastError() == ERROR_ACCESS_DENIED;
    }
    const unsigned long long own = startTime(::GetCurrentProcess());
    const bool reused = own != 0 && startTime(process) > own;
    const bool ended = ::WaitForSingleObject(process, reused ? std::min(limit, clockDoubt)
                                                             : limit) == WAIT_OBJECT_0;
    ::CloseHandle(process);
    return ended || reused;
}

} // namespace ca::helper
