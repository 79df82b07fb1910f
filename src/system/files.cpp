#include "system/files.h"

namespace ca::system {

namespace {

bool move(const SystemPath& from, const SystemPath& to, DWORD flags) {
    return ::MoveFileExW(from.c_str(), to.c_str(), flags) != 0;
}

DWORD attributesOf(const SystemPath& path) {
    return ::GetFileAttributesW(path.c_str());
}

} // namespace

FileHandle FileHandle::openForReading(const SystemPath& path) {
    // Sharing deletion lets a scanner or the player's own tools go on with a file that a check
    // is reading.
    return FileHandle(::CreateFileW(
        path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
        OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
}

FileHandle FileHandle::createForWriting(const SystemPath& path) {
    return FileHandle(::CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                    CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
}

FileHandle FileHandle::createNew(const SystemPath& path) {
    return FileHandle(::CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                    CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
}

FileHandle FileHandle::openAlone(const SystemPath& path) {
    return FileHandle(::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
}

FileHandle::~FileHandle() {
    if (handle_ != INVALID_HANDLE_VALUE) {
        ::CloseHandle(handle_);
    }
}

bool FileHandle::read(void* buffer, std::size_t size, std::size_t& count) const {
    DWORD got = 0;
    const bool good = ::ReadFile(handle_, buffer, static_cast<DWORD>(size), &got, nullptr) != 0;
    count = good ? got : 0;
    return good;
}

bool FileHandle::write(const void* data, std::size_t size) const {
    DWORD written = 0;
    return ::WriteFile(handle_, data, static_cast<DWORD>(size), &written, nullptr) &&
           written == size;
}

bool FileHandle::flush() const {
    return ::FlushFileBuffers(handle_) != 0;
}

bool isMissing(const SystemPath& path) {
    return attributesOf(path) == INVALID_FILE_ATTRIBUTES &&
           ::GetLastError() == ERROR_FILE_NOT_FOUND;
}

bool isLink(const SystemPath& path) {
    const DWORD attributes = attributesOf(path);
    return attributes != INVALID_FILE_ATTRIBUTES &&
           (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

bool isProgram(const SystemPath& file) {
    DWORD kind = 0;
    if (!::GetBinaryTypeW(file.c_str(), &kind)) {
        return false;
    }
    ::SetLastError(ERROR_SUCCESS);
    return kind == SCS_64BIT_BINARY;
}

bool moveFile(const SystemPath& from, const SystemPath& to) {
    return move(from, to, 0);
}

bool replaceFile(const SystemPath& from, const SystemPath& to) {
    return move(from, to, MOVEFILE_REPLACE_EXISTING);
}

bool replaceFileThrough(const SystemPath& from, const SystemPath& to) {
    return move(from, to, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
}

bool linkFile(const SystemPath& from, const SystemPath& to) {
    return ::CreateHardLinkW(to.c_str(), from.c_str(), nullptr) != 0;
}

bool copyFile(const SystemPath& from, const SystemPath& to) {
    return ::CopyFileW(from.c_str(), to.c_str(), TRUE) != 0;
}

bool removeFile(const SystemPath& file) {
    return ::DeleteFileW(file.c_str()) != 0;
}

bool canMakeFile(const SystemPath& file) {
    const HANDLE handle =
        ::CreateFileW(file.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                      FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return false;
    }
    ::CloseHandle(handle);
    return true;
}

bool flushFile(const SystemPath& file) {
    const HANDLE handle = ::CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                        OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
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
