#include "helper/wait.h"

namespace ca::helper {

namespace {

// 100-nanosecond steps since 1601; 0 when the system doesn't tell.
unsigned long long startTime(HANDLE process) {
    FILETIME created{};
    FILETIME unused{};
    if (!::GetProcessTimes(process, &created, &unused, &unused, &unused))
        return 0;
    return static_cast<unsigned long long>(created.dwHighDateTime) << 32 | created.dwLowDateTime;
}

} // namespace

bool waitForEnd(DWORD processId, DWORD limit) {
    const HANDLE process = ::OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, processId);
    if (!process)
        return ::GetLastError() == ERROR_INVALID_PARAMETER; // no such process; any other refusal means that one runs
    const bool reused = startTime(process) > startTime(::GetCurrentProcess());
    const bool ended = reused || ::WaitForSingleObject(process, limit) == WAIT_OBJECT_0;
    ::CloseHandle(process);
    return ended;
}

} // namespace ca::helper
