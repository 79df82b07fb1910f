#include "files/file.h"

#include <cerrno>

using namespace ca::win32;

BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD size, LPDWORD written, LPOVERLAPPED overlapped) {
    const File* opened = objectOf<File>(file);
    if (opened == nullptr) {
        return FALSE;
    }
    if (written == nullptr || overlapped != nullptr) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    *written = 0;
    const auto* bytes = static_cast<const char*>(buffer);
    // The host may take a part and leave the rest, as on a disk that is nearly full; the next call
    // then tells why.
    while (*written < size) {
        const ssize_t count = ::write(opened->descriptor(), bytes + *written, size - *written);
        if (count >= 0) {
            *written += static_cast<DWORD>(count);
        } else if (errno != EINTR) {
            return fail(errorOfTransfer(errno));
        }
    }
    return TRUE;
}
