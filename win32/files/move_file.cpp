#include "files/descriptor.h"
#include "files/path.h"
#include "files/status.h"
#include "last_error.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>

namespace {

using namespace ca::win32;

// Each returns 0 or an errno value.

int renameWithoutReplacing(const std::string& from, const std::string& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return 0;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return errno;
    }
    // A file system without that flag: what is left is to look first, and another process could
    // come in between.
    if (typeOf(to) != 0) {
        return EEXIST;
    }
    return ::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

int moveFile(const std::string& from, const std::string& to, bool replace) {
    const int moved = renameWithoutReplacing(from, to);
    if (moved != EEXIST || !replace) {
        return moved;
    }
    // The host would put a folder in the place of an empty one.
    if (S_ISDIR(typeOf(from)) || S_ISDIR(typeOf(to))) {
        return EACCES;
    }
    return ::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

// The folder that a path is in. Opened before anything changes, while the path still leads there.
class ParentFolder {
public:
    explicit ParentFolder(const std::string& path)
        : descriptor_(::open(folderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {}

    void flush() const {
        if (descriptor_) {
            ::fsync(descriptor_.get());
        }
    }

private:
    const Descriptor descriptor_;
};

} // namespace

BOOL MoveFileExW(LPCWSTR from, LPCWSTR to, DWORD flags) {
    if ((flags & ~(MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) != 0) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    const std::optional<std::string> source = toPath(from);
    const std::optional<std::string> target = toPath(to);
    if (!source || !target) {
        return FALSE;
    }
    const ParentFolder targetFolder(*target);
    const ParentFolder sourceFolder(*source);
    const int moved = moveFile(*source, *target, (flags & MOVEFILE_REPLACE_EXISTING) != 0);
    if (moved == ENOENT && typeOf(*source) != 0) {
        return fail(ERROR_PATH_NOT_FOUND); // so a folder above the target is missing
    }
    if (moved != 0) {
        return failOnPath(moved, *source);
    }
    // The new name stands, so the call has succeeded, whatever becomes of the flush.
    if ((flags & MOVEFILE_WRITE_THROUGH) != 0) {
        targetFolder.flush();
        sourceFolder.flush();
    }
    return TRUE;
}
