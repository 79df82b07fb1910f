#include "system/folders.h"

#include "system/call_path.h"
#include "system/files.h"
#include "system/path.h"
#include "system/retry.h"

#include <string_view>
#include <windows.h>

namespace ca::system {

namespace fs = std::filesystem;

namespace {

constexpr RetryTimes tidyingTimes{.limit = 2 * 1000, .firstPause = 50, .longestPause = 500};

bool isFolder(const fs::path& path) {
    const DWORD attributes = ::GetFileAttributesW(callPath(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool makeOne(const fs::path& folder) {
    return ::CreateDirectoryW(callPath(folder).c_str(), nullptr) != 0;
}

void removeEntry(const fs::path& path, DWORD attributes) {
    if (attributes & FILE_ATTRIBUTE_DIRECTORY) {
        removeFolder(path);
    } else {
        withRetries(tidyingTimes, [&] { return removeFile(path); });
    }
}

void removeContent(const fs::path& folder) {
    WIN32_FIND_DATAW entry{};
    const HANDLE search = ::FindFirstFileW(callPath(folder / "*").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) {
        return;
    }
    do {
        const std::wstring_view name = entry.cFileName;
        if (name != L"." && name != L"..") {
            removeEntry(folder / pathFromWide(entry.cFileName), entry.dwFileAttributes);
        }
    } while (::FindNextFileW(search, &entry));
    ::FindClose(search);
}

} // namespace

bool makeFolders(const fs::path& folder) {
    if (isFolder(folder) || makeOne(folder)) {
        return true;
    }
    const fs::path parent = folder.parent_path();
    if (::GetLastError() == ERROR_PATH_NOT_FOUND && !parent.empty() && parent != folder) {
        return makeFolders(parent) && (makeOne(folder) || isFolder(folder));
    }
    return isFolder(folder); // another process may just have made it
}

void removeFolder(const fs::path& folder) {
    if (!isLink(folder)) {
        removeContent(folder);
    }
    withRetries(tidyingTimes, [&] { return ::RemoveDirectoryW(callPath(folder).c_str()) != 0; });
}

} // namespace ca::system
