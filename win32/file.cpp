#include "host.h"

#include <cerrno>
#include <fcntl.h>
#include <memory>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

using namespace ca::win32;

// below it the host's own read-ahead has the file before a hint could help
constexpr off_t readAheadSize = 1 << 20;

class File : public Object {
public:
    File(int openDescriptor, std::string pathToRemove)
        : descriptor(openDescriptor), removedPath(std::move(pathToRemove)) {}
    ~File() override {
        removeName();
        ::close(descriptor);
    }

    const int descriptor;

private:
    void removeName() const {
        struct stat mine {};
        struct stat named {};
        if (!removedPath.empty() && ::fstat(descriptor, &mine) == 0 &&
            ::lstat(removedPath.c_str(), &named) == 0 && mine.st_dev == named.st_dev &&
            mine.st_ino == named.st_ino) {
            ::unlink(removedPath.c_str());
        }
    }

    const std::string removedPath;
};

std::optional<int> openFlags(DWORD access, DWORD disposition) {
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
    case CREATE_ALWAYS: // CREATE_ALWAYS is opened in two steps, see openFile
    case OPEN_EXISTING:
        return flags;
    case OPEN_ALWAYS:
        return flags | O_CREAT;
    default:
        return std::nullopt;
    }
}

// `existed` tells the two outcomes of CREATE_ALWAYS apart, as its caller is told on Windows.
int openFile(const std::string& path, int flags, DWORD disposition, bool& existed) {
    constexpr mode_t anyone = 0777; // less the umask
    if (disposition != CREATE_ALWAYS) {
        return ::open(path.c_str(), flags, anyone);
    }
    const int made = ::open(path.c_str(), flags | O_CREAT | O_EXCL, anyone);
    if (made >= 0 || errno != EEXIST) {
        return made;
    }
    existed = true;
    return ::open(path.c_str(), flags | O_CREAT | O_TRUNC, anyone);
}

File* fileOf(HANDLE handle) {
    if (handle == nullptr || handle == INVALID_HANDLE_VALUE) {
        fail(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    auto* file = dynamic_cast<File*>(static_cast<Object*>(handle));
    if (file == nullptr) {
        fail(ERROR_INVALID_HANDLE);
    }
    return file;
}

} // namespace

HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                   DWORD disposition, DWORD flagsAndAttributes, HANDLE templateFile) {
    constexpr DWORD knownShare = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    constexpr DWORD knownFlags = FILE_ATTRIBUTE_NORMAL | FILE_ATTRIBUTE_TEMPORARY |
                                 FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_SEQUENTIAL_SCAN;
    const std::optional<int> flags = openFlags(access, disposition);
    if (!flags || (share & ~knownShare) != 0 || (flagsAndAttributes & ~knownFlags) != 0 ||
        security != nullptr || templateFile != nullptr) {
        fail(ERROR_INVALID_PARAMETER);
        return INVALID_HANDLE_VALUE;
    }
    const std::optional<std::string> name = toPath(path);
    if (!name) {
        return INVALID_HANDLE_VALUE;
    }
    bool existed = false;
    const int descriptor = openFile(*name, *flags, disposition, existed);
    if (descriptor < 0) {
        if (errno == EEXIST) {
            fail(ERROR_FILE_EXISTS);
        } else {
            failOnPath(errno, *name);
        }
        return INVALID_HANDLE_VALUE;
    }
    struct stat status {};
    if (access == GENERIC_READ && (::fstat(descriptor, &status) != 0 || S_ISDIR(status.st_mode))) {
        ::close(descriptor);
        fail(ERROR_ACCESS_DENIED); // as the system has it for whoever wants to write
        return INVALID_HANDLE_VALUE;
    }
    if ((flagsAndAttributes & FILE_FLAG_SEQUENTIAL_SCAN) != 0 && status.st_size > readAheadSize) {
        ::posix_fadvise(descriptor, 0, 0, POSIX_FADV_SEQUENTIAL);
    }
    // The kernel lets go of it with the last descriptor, so also when the process is gone.
    if (share == 0 && ::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        ::close(descriptor);
        fail(ERROR_SHARING_VIOLATION);
        return INVALID_HANDLE_VALUE;
    }
    const bool removed = (flagsAndAttributes & FILE_FLAG_DELETE_ON_CLOSE) != 0;
    SetLastError(existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return static_cast<Object*>(new File(descriptor, removed ? *name : std::string()));
}

BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD size, LPDWORD read, LPOVERLAPPED overlapped) {
    const File* opened = fileOf(file);
    if (opened == nullptr) {
        return FALSE;
    }
    if (read == nullptr || overlapped != nullptr) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    *read = 0;
    ssize_t count = 0;
    do {
        count = ::read(opened->descriptor, buffer, size);
    } while (count < 0 && errno == EINTR);
    if (count < 0) {
        // Windows has no EBADF for a handle without the right to read.
        return fail(errno == EBADF ? ERROR_ACCESS_DENIED : errorFromErrno(errno));
    }
    *read = static_cast<DWORD>(count);
    return TRUE;
}

BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD size, LPDWORD written, LPOVERLAPPED overlapped) {
    const File* opened = fileOf(file);
    if (opened == nullptr) {
        return FALSE;
    }
    if (written == nullptr || overlapped != nullptr) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    *written = 0;
    const auto* bytes = static_cast<const char*>(buffer);
    while (*written < size) {
        const ssize_t count = ::write(opened->descriptor, bytes + *written, size - *written);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return fail(errno == EBADF ? ERROR_ACCESS_DENIED : errorFromErrno(errno));
        }
        *written += static_cast<DWORD>(count);
    }
    return TRUE;
}

BOOL FlushFileBuffers(HANDLE file) {
    const File* opened = fileOf(file);
    if (opened == nullptr) {
        return FALSE;
    }
    if ((::fcntl(opened->descriptor, F_GETFL) & O_ACCMODE) == O_RDONLY) {
        return fail(ERROR_ACCESS_DENIED); // as Windows does; the host would flush what others wrote
    }
    return ::fsync(opened->descriptor) == 0 ? TRUE : fail(errorFromErrno(errno));
}

BOOL CloseHandle(HANDLE handle) {
    if (handle == nullptr) {
        return fail(ERROR_INVALID_HANDLE);
    }
    if (handle == INVALID_HANDLE_VALUE) {
        return TRUE; // it is also the current process's handle, which needs no closing
    }
    delete static_cast<Object*>(handle);
    return TRUE;
}
