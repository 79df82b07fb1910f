#include "files/path.h"
#include "files/status.h"
#include "last_error.h"

#include <cerrno>
#include <unistd.h>

using namespace ca::win32;

BOOL CreateDirectoryW(LPCWSTR path, LPSECURITY_ATTRIBUTES security) {
    constexpr mode_t anyone = 0777; // less the umask
    if (security != nullptr) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    const std::optional<std::string> name = toPath(path);
    return name ? resultOnPath(::mkdir(name->c_str(), anyone), *name) : FALSE;
}

BOOL RemoveDirectoryW(LPCWSTR path) {
    const std::optional<std::string> name = toPath(path);
    if (!name) {
        return FALSE;
    }
    // To the host a link to a folder is no folder; to Windows it is one, without contents.
    if (S_ISLNK(typeOf(*name))) {
        return isFolder(*name) ? resultOnPath(::unlink(name->c_str()), *name)
                               : fail(ERROR_DIRECTORY);
    }
    if (::rmdir(name->c_str()) == 0) {
        return TRUE;
    }
    return errno == ENOTDIR ? fail(ERROR_DIRECTORY) : failOnPath(errno, *name);
}
