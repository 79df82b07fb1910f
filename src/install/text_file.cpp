#include "install/text_file.h"

#include "system/files.h"
#include "system/folders.h"
#include "system/retry.h"

#include <array>

namespace ca::install {

namespace fs = std::filesystem;

std::string readTextFile(const fs::path& path) {
    std::string text;
    const system::FileHandle file = system::FileHandle::openForReading(path);
    if (!file) {
        return text;
    }
    std::array<char, 4096> buffer;
    std::size_t count = 0;
    while (file.read(buffer.data(), buffer.size(), count) && count != 0) {
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
    // Something of this name is what an earlier process left, or a link that somebody has put there
    // to be written through.
    system::removeFile(path);
    const system::FileHandle file = system::FileHandle::createNew(path);
    return file && file.write(text.data(), text.size()) && file.flush();
}

// Windows refuses to replace a file that anyone has open, be it a scanner or this program's other
// thread, which reads the version marker on every frame.
bool moveOver(const fs::path& from, const fs::path& to) {
    constexpr system::RetryTimes times{.limit = 2000, .firstPause = 1, .longestPause = 4};
    return system::withRetries(times, [&] { return system::replaceFileThrough(from, to); });
}

} // namespace

bool writeTextFile(const fs::path& path, std::string_view text) {
    system::makeFolders(path.parent_path()); // a failure shows when the file is opened
    // In the same folder, and so on the same volume, where a rename is one step. Under a name of
    // this process, because another launcher may be writing the same file.
    fs::path fresh = path;
    fresh += "." + std::to_string(::GetCurrentProcessId()) + ".new";
    if (writeFlushed(fresh, text) && moveOver(fresh, path)) {
        return true;
    }
    system::removeFile(fresh);
    return false;
}

} // namespace ca::install
