#include "install/text_file.h"

#include "install/file_handle.h"
#include "install/folders.h"
#include "install/paths.h"
#include "install/retry.h"

#include <array>

namespace ca::install {

namespace fs = std::filesystem;

std::string readTextFile(const fs::path& path) {
    std::string text;
    const FileHandle file = FileHandle::openForReading(path);
    if (!file) {
        return text;
    }
    std::array<char, 4096> buffer;
    DWORD count = 0;
    while (
        ::ReadFile(file.get(), buffer.data(), static_cast<DWORD>(buffer.size()), &count, nullptr) &&
        count != 0) {
        text.append(buffer.data(), count);
    }
    return text;
}

std::string_view trimText(std::string_view text) {
    constexpr std::string_view whitespace = " \t\n\v\f\r";
    const std::size_t first = text.find_first_not_of(whitespace);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(whitespace) - first + 1);
}

namespace {

bool writeFlushed(const fs::path& path, std::string_view text) {
    const FileHandle file = FileHandle::createForWriting(path);
    return file && file.write(text.data(), static_cast<DWORD>(text.size())) &&
           ::FlushFileBuffers(file.get());
}

// Windows refuses to replace a file that anyone has open, be it a scanner or this program's other
// thread, which reads the version marker on every frame.
bool moveOver(const fs::path& from, const fs::path& to) {
    constexpr RetryTimes times{.limit = 2000, .firstPause = 1, .longestPause = 4};
    const std::wstring source = systemPath(from);
    const std::wstring target = systemPath(to);
    return withRetries(times, [&] {
        return ::MoveFileExW(source.c_str(), target.c_str(),
                             MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
    });
}

} // namespace

bool writeTextFile(const fs::path& path, std::string_view text) {
    makeFolders(systemPath(path.parent_path())); // a failure shows when the file is opened
    fs::path fresh = path;
    fresh += ".new";
    if (writeFlushed(fresh, text) && moveOver(fresh, path)) {
        return true;
    }
    ::DeleteFileW(systemPath(fresh).c_str());
    return false;
}

} // namespace ca::install
