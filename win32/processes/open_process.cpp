#include "processes/observed_process.h"

#include <cerrno>
#include <sys/syscall.h>

using namespace ca::win32;

HANDLE OpenProcess(DWORD access, BOOL inherit, DWORD processId) {
    // To the host 0 and below mean no single process.
    if (access != (SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION) || inherit || processId == 0 ||
        processId > INT32_MAX) {
        fail(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    // The C library has no function for it.
    const long descriptor = ::syscall(SYS_pidfd_open, static_cast<pid_t>(processId), 0);
    if (descriptor < 0) {
        fail(errno == ESRCH ? ERROR_INVALID_PARAMETER : errorFromErrno(errno));
        return nullptr;
    }
    return handleOf(
        std::make_unique<ObservedProcess>(Descriptor(static_cast<int>(descriptor)), processId));
}
