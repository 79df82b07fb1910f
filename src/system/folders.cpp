#include "system/folders.h"

#include "system/files.h"
#include "system/retry.h"

#include <string_view>
#include <windows.h>

namespace ca::system {

namespace {

constexpr RetryTimes tidyingTimes{.limit = 2 * 1000, .firstPause = 50, .longestPause = 500};

constexpr const wchar_t* separators = L"/\\";

bool isFolder(const SystemPath& path) {
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool makeOne(const SystemPath& folder) {
    return ::CreateDirectoryW(folder.c_str(), nullptr) != 0;
}

// Where the folder above ends; npos or 0 where there is none to make.
std::size_t endOfParent(const SystemPath& folder) {
    return folder.text().find_last_of(separators);
}

// What is in the folder has paths with the folder's own separator in front of the name.
std::wstring insideOf(const SystemPath& folder) {
    const std::wstring& text = folder.text();
    return text + text.substr(text.find_last_of(separators), 1);
}

// Calls `visit` with each entry but the folder itself and the one above.
template <typename Visit>
void forEachEntry(const std::wstring& inside, Visit visit) {
    WIN32_FIND_DATAW entry{};
    const HANDLE search = ::FindFirstFileW(SystemPath(inside + L"*").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) {
        return;
    }
    do {
        const std::wstring_view name = entry.cFileName;
        if (name != L"." && name != L"..") {
            visit(entry);
        }
    } while (::FindNextFileW(search, &entry));
    ::FindClose(search);
}

void removeTree(const SystemPath& folder, const Patience& patience);

void removeContent(const SystemPath& folder, const Patience& patience) {
    const std::wstring inside = insideOf(folder);
    forEachEntry(inside, [&](const WIN32_FIND_DATAW& entry) {
        const std::wstring path = inside + entry.cFileName;
        if (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
            removeTree(path, patience);
        } else {
            patience.retry([&] { return removeFile(path); });
        }
    });
}

void removeTree(const SystemPath& folder, const Patience& patience) {
    if (!isLink(folder)) {
        removeContent(folder, patience);
    }
    patience.retry([&] { return ::RemoveDirectoryW(folder.c_str()) != 0; });
}

} // namespace

bool makeFolders(const SystemPath& folder) {
    if (isFolder(folder) || makeOne(folder)) {
        return true;
    }
    const bool isParentMissing = ::GetLastError() == ERROR_PATH_NOT_FOUND;
    const std::size_t end = endOfParent(folder);
    if (!isParentMissing || end == std::wstring::npos || end == 0) {
        return isFolder(folder); // another process may just have made it
    }
    return makeFolders(folder.text().substr(0, end)) && (makeOne(folder) || isFolder(folder));
}

bool makeNewFolder(const SystemPath& folder) {
    return makeOne(folder);
}

void listFolder(const SystemPath& folder, const std::function<void(const std::wstring&)>& visit) {
    forEachEntry(insideOf(folder), [&](const WIN32_FIND_DATAW& entry) { visit(entry.cFileName); });
}

void removeFolder(const SystemPath& folder) {
    removeTree(folder, Patience(tidyingTimes));
}

} // namespace ca::system
