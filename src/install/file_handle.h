// One open file, closed on every way out of the call that opened it.
#pragma once

#include <filesystem>
#include <windows.h>

namespace ca::install {

// Owns a handle of CreateFileW. Not copyable; belongs to one thread.
class FileHandle {
public:
    // Opens an existing file for reading front to back. Others may read, write, rename
    // or delete it meanwhile.
    static FileHandle openForReading(const std::filesystem::path& path);
    // Makes the file, or empties the one that is there, for writing. Others may
    // only read it meanwhile.
    static FileHandle createForWriting(const std::filesystem::path& path);

    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;
    ~FileHandle();

    explicit operator bool() const { return handle_ != INVALID_HANDLE_VALUE; }
    HANDLE get() const { return handle_; }

    // Writes all of it: false when the system takes less, as on a full disk. Blocks on the disk.
    bool write(const char* data, DWORD size) const;

private:
    explicit FileHandle(HANDLE handle) : handle_(handle) {}

    HANDLE handle_;
};

} // namespace ca::install
