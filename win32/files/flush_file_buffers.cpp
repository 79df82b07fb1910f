#include "files/file.h"

#include <cerrno>
#include <fcntl.h>

using namespace ca::win32;

BOOL FlushFileBuffers(HANDLE file) {
    const File* opened = objectOf<File>(file);
    if (opened == nullptr) {
        return FALSE;
    }
    // Windows refuses a handle without the right to write. The host would flush what others wrote.
    if ((::fcntl(opened->descriptor(), F_GETFL) & O_ACCMODE) == O_RDONLY) {
        return fail(ERROR_ACCESS_DENIED);
    }
    return ::fsync(opened->descriptor()) == 0 ? TRUE : fail(errorFromErrno(errno));
}
