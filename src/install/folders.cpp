#include "install/folders.h"

#include "install/retry.h"

#include <string_view>
#include <windows.h>

namespace ca::install {

namespace {

constexpr RetryTimes tidyingTimes{.limit = 2 * 1000, .firstPause = 50, .longestPause = 500};

bool isFolder(const std::wstring& path) {
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

} // namespace

std::wstring withoutLimit(const std::wstring& path) {
    return path.size() > 1 && path[1] == L':' ? L"\\\\?\\" + path : path;
}

bool isLink(const std::wstring& path) {
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES &&
           (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

bool makeFolders(const std::wstring& folder) {
    if (isFolder(folder) || ::CreateDirectoryW(folder.c_str(), nullptr)) {
        return true;
    }
    const std::size_t end = folder.find_last_of(L"/\\");
    if (::GetLastError() != ERROR_PATH_NOT_FOUND || end == std::wstring::npos || end == 0) {
        return isFolder(folder); // another process may just have made it
    }
    return makeFolders(folder.substr(0, end)) &&
           (::CreateDirectoryW(folder.c_str(), nullptr) || isFolder(folder));
}

void removeFolder(const std::wstring& folder) {
    if (!isLink(folder)) {
        const std::wstring inside = folder + folder.substr(folder.find_last_of(L"/\\"), 1);
        WIN32_FIND_DATAW entry{};
        const HANDLE search = ::FindFirstFileW((inside + L"*").c_str(), &entry);
        if (search != INVALID_HANDLE_VALUE) {
            do {
                const std::wstring_view name = entry.cFileName;
                if (name == L"." || name == L"..") {
                    continue;
                }
                if (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
                    removeFolder(inside + entry.cFileName);
                } else {
                    withRetries(tidyingTimes, [&] {
                        return ::DeleteFileW((inside + entry.cFileName).c_str()) != 0;
                    });
                }
            } while (::FindNextFileW(search, &entry));
            ::FindClose(search);
        }
    }
    withRetries(tidyingTimes, [&] { return ::RemoveDirectoryW(folder.c_str()) != 0; });
}

} // namespace ca::install
