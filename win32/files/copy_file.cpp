#include "files/descriptor.h"
#include "files/path.h"
#include "files/status.h"
#include "last_error.h"

#include <array>
#include <cerrno>
#include <fcntl.h>

namespace {

using namespace ca::win32;

bool writeAll(int file, const char* bytes, std::size_t size) {
    while (size > 0) {
        const ssize_t written = ::write(file, bytes, size);
        if (written < 0) {
            return false;
        }
        bytes += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

// False with errno if a read or a write failed.
bool copyBytes(int from, int to) {
    std::array<char, 65536> buffer{};
    for (;;) {
        const ssize_t count = ::read(from, buffer.data(), buffer.size());
        if (count <= 0) {
            return count == 0;
        }
        if (!writeAll(to, buffer.data(), static_cast<std::size_t>(count))) {
            return false;
        }
    }
}

} // namespace

BOOL CopyFileW(LPCWSTR from, LPCWSTR to, BOOL failIfExists) {
    const std::optional<std::string> source = toPath(from);
    const std::optional<std::string> target = toPath(to);
    if (!source || !target) {
        return FALSE;
    }
    const Descriptor in(::open(source->c_str(), O_RDONLY | O_CLOEXEC));
    struct stat status {};
    if (!in || ::fstat(in.get(), &status) != 0) {
        return failOnPath(errno, *source);
    }
    // Not emptied by the open: the target may turn out to be the source.
    const int flags = O_WRONLY | O_CREAT | O_CLOEXEC | (failIfExists ? O_EXCL : 0);
    const Descriptor out(::open(target->c_str(), flags, status.st_mode));
    if (!out) {
        return errno == EEXIST ? fail(ERROR_FILE_EXISTS) : failOnPath(errno, *target);
    }
    // Another name of the source would be emptied before it is read.
    struct stat existing {};
    if (::fstat(out.get(), &existing) == 0 && isSameFile(existing, status)) {
        return fail(ERROR_SHARING_VIOLATION);
    }
    if (::ftruncate(out.get(), 0) != 0 || !copyBytes(in.get(), out.get())) {
        // A copy that ends half-way could be taken for the file.
        const int number = errno;
        ::unlink(target->c_str());
        return fail(errorFromErrno(number));
    }
    return TRUE;
}
