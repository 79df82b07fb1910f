#include "files/file.h"
#include "files/path.h"

#include <cerrno>
#include <fcntl.h>
#include <memory>
#include <sys/file.h>
#include <sys/stat.h>

namespace {

using namespace ca::win32;

// Below it the host's own read-ahead has the file before a hint could help.
constexpr off_t readAheadSize = 1 << 20;

bool areKnown(DWORD share, DWORD flagsAndAttributes) {
    constexpr DWORD knownShare = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    constexpr DWORD knownFlags = FILE_ATTRIBUTE_NORMAL | FILE_ATTRIBUTE_TEMPORARY |
                                 FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_SEQUENTIAL_SCAN;
    return (share & ~knownShare) == 0 && (flagsAndAttributes & ~knownFlags) == 0;
}

std::optional<int> openFlags(DWORD access, DWORD disposition) {
    // No started program inherits the file, and opening a terminal doesn't take it over.
    int flags = O_CLOEXEC | O_NOCTTY;
    switch (access) {
    case GENERIC_READ:
        flags |= O_RDONLY;
        break;
    case GENERIC_WRITE:
        flags |= O_WRONLY;
        break;
    case GENERIC_READ | GENERIC_WRITE:
        flags |= O_RDWR;
        break;
    default:
        return std::nullopt;
    }
    switch (disposition) {
    case CREATE_NEW:
        return flags | O_CREAT | O_EXCL;
    case CREATE_ALWAYS: // in two steps, see openFile
    case OPEN_EXISTING:
        return flags;
    case OPEN_ALWAYS:
        return flags | O_CREAT;
    default:
        return std::nullopt;
    }
}

// `existed` tells the two outcomes of CREATE_ALWAYS apart, as its caller is told on Windows. The
// host's open does both in one step and doesn't say which it was.
Descriptor openFile(const std::string& path, int flags, DWORD disposition, bool& existed) {
    constexpr mode_t anyone = 0777; // less the umask
    if (disposition != CREATE_ALWAYS) {
        return Descriptor(::open(path.c_str(), flags, anyone));
    }
    Descriptor made(::open(path.c_str(), flags | O_CREAT | O_EXCL, anyone));
    if (made || errno != EEXIST) {
        return made;
    }
    existed = true;
    return Descriptor(::open(path.c_str(), flags | O_CREAT | O_TRUNC, anyone));
}

} // namespace

HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                   DWORD disposition, DWORD flagsAndAttributes, HANDLE templateFile) {
    const std::optional<int> flags = openFlags(access, disposition);
    if (!flags || !areKnown(share, flagsAndAttributes) || security != nullptr ||
        templateFile != nullptr) {
        fail(ERROR_INVALID_PARAMETER);
        return INVALID_HANDLE_VALUE;
    }
    const std::optional<std::string> name = toPath(path);
    if (!name) {
        return INVALID_HANDLE_VALUE;
    }
    bool existed = false;
    Descriptor file = openFile(*name, *flags, disposition, existed);
    if (!file) {
        const int number = errno;
        number == EEXIST ? fail(ERROR_FILE_EXISTS) : failOnPath(number, *name);
        return INVALID_HANDLE_VALUE;
    }
    struct stat status {};
    if (access == GENERIC_READ && (::fstat(file.get(), &status) != 0 || S_ISDIR(status.st_mode))) {
        // The host opens a folder for reading. It refuses one for writing by itself.
        fail(ERROR_ACCESS_DENIED);
        return INVALID_HANDLE_VALUE;
    }
    // The kernel lets go of it with the last descriptor, so also when the process is gone.
    // A file system without such locks shares everything.
    if (share == 0 && ::flock(file.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        fail(ERROR_SHARING_VIOLATION);
        return INVALID_HANDLE_VALUE;
    }
    // A hint that fails costs speed and nothing else.
    if ((flagsAndAttributes & FILE_FLAG_SEQUENTIAL_SCAN) != 0 && status.st_size > readAheadSize) {
        ::posix_fadvise(file.get(), 0, 0, POSIX_FADV_SEQUENTIAL);
    }
    const bool removed = (flagsAndAttributes & FILE_FLAG_DELETE_ON_CLOSE) != 0;
    ::SetLastError(existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return handleOf(std::make_unique<File>(std::move(file), removed ? *name : std::string()));
}
