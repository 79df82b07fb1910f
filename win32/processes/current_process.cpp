#include <unistd.h>
#include <windows.h>

// The same pseudo handle as on Windows. It points at nothing.
HANDLE GetCurrentProcess() {
    return INVALID_HANDLE_VALUE;
}

DWORD GetCurrentProcessId() {
    return static_cast<DWORD>(::getpid());
}
