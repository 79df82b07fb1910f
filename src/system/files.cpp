#include "system/files.h"

#include "system/call_path.h"

namespace ca::system {

namespace fs = std::filesystem;

namespace {

bool move(const fs::path& from, const fs::path& to, DWORD flags) {
    return ::MoveFileExW(callPath(from).c_str(), callPath(to).c_str(), flags) != 0;
}

DWORD attributesOf(const fs::path& path) {
    return ::GetFileAttributesW(callPath(path).c_str());
}

bool isReparsePoint(DWORD attributes) {
    return attributes != INVALID_FILE_ATTRIBUTES &&
           (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

} // namespace

FileHandle FileHandle::openForReading(const fs::path& path) {
    // Sharing deletion lets a scanner or the player's own tools go on with a file that a check
    // is reading.
    return FileHandle(::CreateFileW(callPath(path).c_str(), GENERIC_READ,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
}

FileHandle FileHandle::createForWriting(const fs::path& path) {
    return FileHandle(::CreateFileW(callPath(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                    CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
}

FileHandle::~FileHandle() {
    if (handle_ != INVALID_HANDLE_VALUE) {
        ::CloseHandle(handle_);
    }
}

std::size_t FileHandle::read(void* buffer, std::size_t size) const {
    DWORD count = 0;
    return ::ReadFile(handle_, buffer, static_cast<DWORD>(size), &count, nullptr) ? count : 0;
}

bool FileHandle::write(const void* data, std::size_t size) const {
    DWORD written = 0;
    return ::WriteFile(handle_, data, static_cast<DWORD>(size), &written, nullptr) &&
           written == size;
}

bool FileHandle::flush() const {
    return ::FlushFileBuffers(handle_) != 0;
}

bool pathExists(const fs::path& path) {
    const DWORD attributes = attributesOf(path);
    if (!isReparsePoint(attributes)) {
        return attributes != INVALID_FILE_ATTRIBUTES;
    }
    std::error_code ignored; // a link that leads nowhere counts as absent
    return fs::exists(fs::status(path, ignored));
}

bool isFile(const fs::path& path) {
    const DWORD attributes = attributesOf(path);
    if (!isReparsePoint(attributes)) {
        return attributes != INVALID_FILE_ATTRIBUTES &&
               (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE)) == 0;
    }
    std::error_code ignored;
    return fs::is_regular_file(fs::status(path, ignored));
}

bool isMissing(const fs::path& path) {
    return attributesOf(path) == INVALID_FILE_ATTRIBUTES &&
           ::GetLastError() == ERROR_FILE_NOT_FOUND;
}

bool isLink(const fs::path& path) {
    return isReparsePoint(attributesOf(path));
}

bool isProgram(const fs::path& file) {
    DWORD kind = 0;
    if (!::GetBinaryTypeW(callPath(file).c_str(), &kind)) {
        return false;
    }
    ::SetLastError(ERROR_SUCCESS);
    return kind == SCS_64BIT_BINARY;
}

bool moveFile(const fs::path& from, const fs::path& to) {
    return move(from, to, 0);
}

bool replaceFile(const fs::path& from, const fs::path& to) {
    return move(from, to, MOVEFILE_REPLACE_EXISTING);
}

bool replaceFileThrough(const fs::path& from, const fs::path& to) {
    return move(from, to, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
}

bool linkFile(const fs::path& from, const fs::path& to) {
    return ::CreateHardLinkW(callPath(to).c_str(), callPath(from).c_str(), nullptr) != 0;
}

bool copyFile(const fs::path& from, const fs::path& to) {
    return ::CopyFileW(callPath(from).c_str(), callPath(to).c_str(), TRUE) != 0;
}

bool removeFile(const fs::path& file) {
    return ::DeleteFileW(callPath(file).c_str()) != 0;
}

bool canMakeFile(const fs::path& file) {
    const HANDLE handle =
        ::CreateFileW(callPath(file).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                      FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return false;
    }
    ::CloseHandle(handle);
    return true;
}

bool flushFile(const fs::path& file) {
    const HANDLE handle = ::CreateFileW(callPath(file).c_str(), GENERIC_WRITE, FILE_SHARE_READ,
                                        nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return false;
    }
    const bool flushed = ::FlushFileBuffers(handle) != 0;
    const DWORD error = ::GetLastError();
    ::CloseHandle(handle);
    ::SetLastError(error); // closing may have changed it
    return flushed;
}

} // namespace ca::system
