#include "host.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace ca::win32;

bool isFolder(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool exists(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0;
}

int renameWithoutReplacing(const std::string& from, const std::string& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return 0;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return errno;
    }
    // A file system without that flag: what is left is to look first, and another process
    // could come in between.
    if (exists(to)) {
        return EEXIST;
    }
    return ::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

int moveFile(const std::string& from, const std::string& to, bool replace) {
    const int moved = renameWithoutReplacing(from, to);
    if (moved != EEXIST || !replace) {
        return moved;
    }
    if (isFolder(from) || isFolder(to)) {
        return EACCES;
    }
    return ::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

// The folder that `path` lies in, opened before anything changes: what can't be opened afterwards
// can't be flushed, and a rename that has happened must not look like one that failed.
class ParentFolder {
public:
    explicit ParentFolder(const std::string& path) {
        const std::size_t slash = path.find_last_of('/');
        const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
        descriptor_ = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    }
    ~ParentFolder() {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
    }
    ParentFolder(const ParentFolder&) = delete;
    ParentFolder& operator=(const ParentFolder&) = delete;

    // An errno, or 0. EINVAL: a file system that has nothing to flush for a folder.
    int flush() const {
        return descriptor_ < 0 || ::fsync(descriptor_) == 0 || errno == EINVAL ? 0 : errno;
    }

private:
    int descriptor_ = -1;
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
    if (moved != 0) {
        // ENOENT is the source's, or else of a folder above the target.
        return moved == ENOENT && exists(*source) ? fail(ERROR_PATH_NOT_FOUND)
                                                  : failOnPath(moved, *source);
    }
    if ((flags & MOVEFILE_WRITE_THROUGH) != 0) {
        for (const ParentFolder* folder : {&targetFolder, &sourceFolder}) {
            if (const int flushed = folder->flush(); flushed != 0) {
                return fail(errorFromErrno(flushed));
            }
        }
    }
    return TRUE;
}
