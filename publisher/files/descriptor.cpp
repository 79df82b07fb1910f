#include "publisher/files/descriptor.h"

#include "publisher/text/failure.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace ca::publisher {

Descriptor openForReading(const std::filesystem::path& path) {
    // Not blocking, because opening a pipe would wait for its writer.
    Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (!file) {
        failWithReason("can't read " + path.string());
    }
    struct stat status {};
    if (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        throw Failure("can't read " + path.string() + ": it isn't a plain file");
    }
    return file;
}

Descriptor createFile(const std::filesystem::path& path, unsigned mode) {
    Descriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    // Once more, because open takes the umask's bits away.
    if (file && ::fchmod(file.get(), mode) == 0) {
        return file;
    }
    const int reason = errno; // unlink may set another
    if (file) {
        ::unlink(path.c_str());
    }
    errno = reason;
    failWithReason("can't make " + path.string());
}

std::size_t readSome(const Descriptor& file, void* buffer, std::size_t size,
                     const std::filesystem::path& path) {
    for (;;) {
        const ssize_t count = ::read(file.get(), buffer, size);
        if (count >= 0) {
            return static_cast<std::size_t>(count);
        }
        if (errno != EINTR) {
            failWithReason("can't read " + path.string());
        }
    }
}

void writeAll(const Descriptor& file, const void* data, std::size_t size,
              const std::filesystem::path& path) {
    for (const char* rest = static_cast<const char*>(data); size != 0;) {
        const ssize_t count = ::write(file.get(), rest, size);
        if (count < 0 && errno != EINTR) {
            failWithReason("can't write " + path.string());
        }
        const std::size_t written = count < 0 ? 0 : static_cast<std::size_t>(count);
        rest += written;
        size -= written;
    }
}

std::string readWhole(const std::filesystem::path& path) {
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC)); // a link may lead to a key
    if (!file) {
        failWithReason("can't read " + path.string());
    }
    std::string text;
    std::array<char, 65536> buffer;
    while (const std::size_t count = readSome(file, buffer.data(), buffer.size(), path)) {
        text.append(buffer.data(), count);
    }
    return text;
}

void writeNewFile(const std::filesystem::path& path, std::string_view text, unsigned mode) {
    const Descriptor file = createFile(path, mode);
    try {
        writeAll(file, text.data(), text.size(), path);
        // A key or a manifest that is gone after a power cut couldn't be made again.
        if (::fsync(file.get()) != 0) {
            failWithReason("can't write " + path.string());
        }
    } catch (const Failure&) {
        ::unlink(path.c_str()); // half of it helps nobody
        throw;
    }
}

void flushDisk(const std::filesystem::path& path) {
    const Descriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // fsync of a folder would bring its entries alone.
    if (!folder || ::syncfs(folder.get()) != 0) {
        failWithReason("can't bring to the disk what is in " + path.string());
    }
}

void makeReadableFolder(const std::filesystem::path& path) {
    std::error_code none;
    if (path.empty() || std::filesystem::is_directory(path, none)) {
        return;
    }
    makeReadableFolder(path.parent_path());
    // A mask for the moment: a chmod behind it would leave a closed folder if
    // it never came to that.
    const mode_t mask = ::umask(022);
    const bool made = ::mkdir(path.c_str(), 0755) == 0;
    ::umask(mask);
    // a slash at the end is there already
    if (!made && (errno != EEXIST || !std::filesystem::is_directory(path, none))) {
        failWithReason("can't make the folder " + path.string());
    }
}

} // namespace ca::publisher
