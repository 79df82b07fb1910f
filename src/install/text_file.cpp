#include "install/text_file.h"

#include "install/file_handle.h"
#include "install/paths.h"

#include <array>
#include <chrono>
#include <thread>

namespace ca::install {

namespace fs = std::filesystem;

std::string readTextFile(const fs::path& path) {
    std::string text;
    const FileHandle file = FileHandle::openForReading(path);
    if (!file)
        return text;
    std::array<char, 4096> buffer;
    DWORD count = 0;
    while (::ReadFile(file.get(), buffer.data(), static_cast<DWORD>(buffer.size()), &count, nullptr) && count != 0)
        text.append(buffer.data(), count);
    return text;
}

std::string_view trimText(std::string_view text) {
    constexpr std::string_view whitespace = " \t\n\v\f\r";
    const std::size_t first = text.find_first_not_of(whitespace);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(whitespace) - first + 1);
}

namespace {

bool writeFlushed(const fs::path& path, std::string_view text) {
    const FileHandle file = FileHandle::createForWriting(path);
    return file && file.write(text.data(), static_cast<DWORD>(text.size())) && ::FlushFileBuffers(file.get());
}

// Windows replaces no file that anyone has open, if only to read it, and the screen reads the version marker on every
// frame: tried again, the rename falls between two frames.
bool replaceFile(const fs::path& fresh, const fs::path& path) {
    constexpr int mostTries = 100;
    for (int tries = 1;; ++tries) {
        if (::MoveFileExW(wideFromPath(fresh).c_str(), wideFromPath(path).c_str(),
                          MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
            return true;
        const DWORD error = ::GetLastError();
        if (tries == mostTries || (error != ERROR_ACCESS_DENIED && error != ERROR_SHARING_VIOLATION))
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

} // namespace

bool writeTextFile(const fs::path& path, std::string_view text) {
    std::error_code ignored; // a folder that can't be made shows when the file is opened
    fs::create_directories(path.parent_path(), ignored);
    fs::path fresh = path;
    fresh += ".new";
    if (writeFlushed(fresh, text) && replaceFile(fresh, path))
        return true;
    fs::remove(fresh, ignored);
    return false;
}

} // namespace ca::install
