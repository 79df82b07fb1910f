#include "install/file_handle.h"

#include "install/paths.h"

namespace ca::install {

FileHandle FileHandle::openForReading(const std::filesystem::path& path) {
    // Sharing deletion lets a scanner or the player's own tools go on with a file
    // that a check is reading.
    return FileHandle(::CreateFileW(systemPath(path).c_str(), GENERIC_READ,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
}

FileHandle FileHandle::createForWriting(const std::filesystem::path& path) {
    return FileHandle(::CreateFileW(systemPath(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ,
                                    nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
}

FileHandle::~FileHandle() {
    if (handle_ != INVALID_HANDLE_VALUE) {
        ::CloseHandle(handle_);
    }
}

bool FileHandle::write(const char* data, DWORD size) const {
    DWORD written = 0;
    return ::WriteFile(handle_, data, size, &written, nullptr) && written == size;
}

} // namespace ca::install
