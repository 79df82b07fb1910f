// Files: opened, asked about, moved, removed. Paths may have any length. Each call blocks on the
// disk; any thread. Where one that changes something returns false, the calling thread's last
// error says why, so that withRetries can judge it, and nothing has changed, unless it says
// otherwise.
#pragma once

#include "system/system_path.h"

#include <cstddef>
#include <utility>
#include <windows.h>

namespace ca::system {

// Owns one open file and closes it on every way out of the call that opened it. Not copyable;
// belongs to one thread.
class FileHandle {
public:
    // Opens an existing file for reading front to back. Others may read, write, rename or delete
    // it meanwhile.
    static FileHandle openForReading(const SystemPath& path);
    // Makes the file, or empties the one that is there, for writing. Others may only read it
    // meanwhile.
    static FileHandle createForWriting(const SystemPath& path);
    // The same for a file that must not be there yet; a link there isn't followed.
    static FileHandle createNew(const SystemPath& path);
    // Opens the file, made if missing, for nobody else: fails while another has it so, and is free
    // again when the handle is closed or its process is gone.
    static FileHandle openAlone(const SystemPath& path);

    FileHandle(FileHandle&& other) noexcept
        : handle_(std::exchange(other.handle_, INVALID_HANDLE_VALUE)) {}
    FileHandle& operator=(FileHandle&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    ~FileHandle();

    explicit operator bool() const { return handle_ != INVALID_HANDLE_VALUE; }

    // Reads up to `size` bytes from where the last read ended; a `count` of 0 is the file's end.
    // False on a read error; `count` is 0 then.
    bool read(void* buffer, std::size_t size, std::size_t& count) const;
    // Writes all of it: false when the system takes less, as on a full disk.
    bool write(const void* data, std::size_t size) const;
    // Brings what was written to the disk.
    bool flush() const;

private:
    explicit FileHandle(HANDLE handle) : handle_(handle) {}

    HANDLE handle_;
};

// Whether nothing is there, and the system says so. A link counts as something, wherever it leads.
bool isMissing(const SystemPath& path);

// Whether the path itself is a link to somewhere else; a link on the way would lead a write or a
// removal out of the installation. False also for what is missing, and when the system doesn't
// tell.
bool isLink(const SystemPath& path);

// Whether the system recognises the file as a 64-bit program. False leaves a last error only where
// the file couldn't be judged.
bool isProgram(const SystemPath& file);

// Renames a file or a folder, on one volume. `moveFile` fails when something is at `to`. The others
// put a file in the place of one that may be there: the name `to` means the old or the new one at
// every moment. `replaceFileThrough` returns once the rename has reached the disk.
bool moveFile(const SystemPath& from, const SystemPath& to);
bool replaceFile(const SystemPath& from, const SystemPath& to);
bool replaceFileThrough(const SystemPath& from, const SystemPath& to);

// Both make `to` and fail when something is there: a second name of the same file, where the volume
// knows such names, or a copy. A copy that fails halfway may leave a part.
bool linkFile(const SystemPath& from, const SystemPath& to);
bool copyFile(const SystemPath& from, const SystemPath& to);

bool removeFile(const SystemPath& file);

// Whether a new file of this name can be made: one is made, empty, and vanishes again. False
// also when the name is taken.
bool canMakeFile(const SystemPath& file);

// Brings the file's bytes to the disk, so that a power cut after a rename can't leave a name
// without them.
bool flushFile(const SystemPath& file);

} // namespace ca::system
