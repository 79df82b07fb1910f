#include "last_error.h"

#include <cerrno>

namespace {

// Each thread has its own, as on Windows: the job's calls don't disturb the main thread's.
thread_local DWORD lastError = ERROR_SUCCESS;

struct ErrorRow {
    int number;
    DWORD error;
};

// In the order of the host's numbers. A number that isn't here becomes ERROR_GEN_FAILURE, which the
// launcher doesn't try again: no number of its own means that nothing is known to pass by itself.
constexpr ErrorRow errorTable[] = {
    {EPERM, ERROR_ACCESS_DENIED},
    {ENOENT, ERROR_FILE_NOT_FOUND},
    {EIO, ERROR_IO_DEVICE},
    {ENOEXEC, ERROR_BAD_EXE_FORMAT},
    {EBADF, ERROR_INVALID_HANDLE},
    {EAGAIN, ERROR_NO_SYSTEM_RESOURCES},
    {ENOMEM, ERROR_NOT_ENOUGH_MEMORY},
    {EACCES, ERROR_ACCESS_DENIED},
    {EBUSY, ERROR_SHARING_VIOLATION},
    {EEXIST, ERROR_ALREADY_EXISTS},
    {EXDEV, ERROR_NOT_SAME_DEVICE},
    {ENOTDIR, ERROR_PATH_NOT_FOUND},
    {EISDIR, ERROR_ACCESS_DENIED},
    {EINVAL, ERROR_INVALID_PARAMETER},
    {ENFILE, ERROR_TOO_MANY_OPEN_FILES},
    {EMFILE, ERROR_TOO_MANY_OPEN_FILES},
    {ETXTBSY, ERROR_SHARING_VIOLATION},
    {EFBIG, ERROR_FILE_TOO_LARGE},
    {ENOSPC, ERROR_DISK_FULL},
    {EDQUOT, ERROR_DISK_FULL},
    {EROFS, ERROR_WRITE_PROTECT},
    {ENAMETOOLONG, ERROR_FILENAME_EXCED_RANGE},
    {E2BIG, ERROR_FILENAME_EXCED_RANGE},
    {ENOTEMPTY, ERROR_DIR_NOT_EMPTY},
    {ELOOP, ERROR_PATH_NOT_FOUND},
};

} // namespace

DWORD GetLastError() {
    return lastError;
}

void SetLastError(DWORD error) {
    lastError = error;
}

namespace ca::win32 {

DWORD errorFromErrno(int number) {
    for (const ErrorRow& row : errorTable) {
        if (row.number == number) {
            return row.error;
        }
    }
    return ERROR_GEN_FAILURE;
}

BOOL fail(DWORD error) {
    lastError = error;
    return FALSE;
}

} // namespace ca::win32
