#include "files/file.h"

#include <cerrno>

using namespace ca::win32;

BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD size, LPDWORD read, LPOVERLAPPED overlapped) {
    const File* opened = objectOf<File>(file);
    if (opened == nullptr) {
        return FALSE;
    }
    if (read == nullptr || overlapped != nullptr) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    *read = 0;
    // Only a signal is waited out. Fewer bytes than asked for are the caller's to go on from.
    ssize_t count = 0;
    do {
        count = ::read(opened->descriptor(), buffer, size);
    } while (count < 0 && errno == EINTR);
    if (count < 0) {
        return fail(errorOfTransfer(errno));
    }
    *read = static_cast<DWORD>(count);
    return TRUE;
}
