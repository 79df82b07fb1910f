// One open file descriptor, closed on every way out of the call that opened it.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace ca::publisher {

class Descriptor {
public:
    explicit Descriptor(int number = -1) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~Descriptor() {
        if (number_ >= 0) {
            ::close(number_);
        }
    }

    explicit operator bool() const { return number_ >= 0; }
    int get() const { return number_; }

private:
    int number_;
};

// Each throws Failure with the file's name. They block on the disk; any thread.

// Never a link's target, a pipe or a device.
Descriptor openForReading(const std::filesystem::path& path);
// The file must not be there yet.
Descriptor createFile(const std::filesystem::path& path, unsigned mode);
// Returns how many bytes were read, 0 at the end.
std::size_t readSome(const Descriptor& file, void* buffer, std::size_t size,
                     const std::filesystem::path& path);
void writeAll(const Descriptor& file, const void* data, std::size_t size,
              const std::filesystem::path& path);

// A whole file that must be there; for keys, notes and manifests.
std::string readWhole(const std::filesystem::path& path);
// Makes the file, which must not be there yet, with exactly this mode, whatever the umask, and
// brings it to the disk. A failure leaves none of it.
void writeNewFile(const std::filesystem::path& path, std::string_view text, unsigned mode);

// Brings everything to the disk that is new on the file system of this folder: one call, where one
// for each of many files would take minutes.
void flushDisk(const std::filesystem::path& path);
// Makes the folder and those above it that are missing, for everybody to read, whatever the umask:
// a web server has to. What is there stays as it is. No other thread may make files meanwhile.
void makeReadableFolder(const std::filesystem::path& path);

} // namespace ca::publisher
