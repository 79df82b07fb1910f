#include "files/file_attributes.h"

#include "files/path.h"
#include "files/status.h"

#include <cerrno>

namespace ca::win32 {

DWORD attributesOf(const struct stat& status, const std::string& path) {
    // The second bit tells which call removes the link.
    if (S_ISLNK(status.st_mode)) {
        return FILE_ATTRIBUTE_REPARSE_POINT | (isFolder(path) ? FILE_ATTRIBUTE_DIRECTORY : 0);
    }
    if (S_ISDIR(status.st_mode)) {
        return FILE_ATTRIBUTE_DIRECTORY;
    }
    return S_ISREG(status.st_mode) ? FILE_ATTRIBUTE_NORMAL : FILE_ATTRIBUTE_DEVICE;
}

} // namespace ca::win32

using namespace ca::win32;

DWORD GetFileAttributesW(LPCWSTR path) {
    const std::optional<std::string> name = toPath(path);
    if (!name) {
        return INVALID_FILE_ATTRIBUTES;
    }
    struct stat status {};
    if (::lstat(name->c_str(), &status) != 0) {
        failOnPath(errno, *name);
        return INVALID_FILE_ATTRIBUTES;
    }
    return attributesOf(status, *name);
}
