#include "files/path.h"
#include "files/status.h"
#include "last_error.h"

#include <unistd.h>

using namespace ca::win32;

BOOL DeleteFileW(LPCWSTR path) {
    const std::optional<std::string> name = toPath(path);
    if (!name) {
        return FALSE;
    }
    // The host would unlink a link to a folder. Windows leaves that to RemoveDirectoryW.
    if (isFolder(*name)) {
        return fail(ERROR_ACCESS_DENIED);
    }
    return resultOnPath(::unlink(name->c_str()), *name);
}
