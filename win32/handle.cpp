#include "handle.h"

using namespace ca::win32;

BOOL CloseHandle(HANDLE handle) {
    if (handle == nullptr) {
        return fail(ERROR_INVALID_HANDLE);
    }
    // It is also the current process's handle, which needs no closing.
    if (handle == INVALID_HANDLE_VALUE) {
        return TRUE;
    }
    delete static_cast<Object*>(handle);
    return TRUE;
}
