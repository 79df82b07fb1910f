#include "files/status.h"
#include "last_error.h"
#include "text/utf8.h"

#include <climits>
#include <cwchar>
#include <unistd.h>

namespace {

using namespace ca::win32;

constexpr const char* selfLink = "/proc/self/exe";

bool isRunningFile(const std::string& path) {
    struct stat running {};
    struct stat named {};
    return ::stat(selfLink, &running) == 0 && ::stat(path.c_str(), &named) == 0 &&
           isSameFile(running, named);
}

std::string readOwnPath() {
    // The kernel keeps no link whose target is longer.
    std::string path(PATH_MAX, '\0');
    const ssize_t length = ::readlink(selfLink, path.data(), path.size());
    path.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    // The kernel's mark for a file that another has taken the place of, or else part of the name.
    constexpr std::string_view mark = " (deleted)";
    if (path.ends_with(mark) && !isRunningFile(path)) {
        path.resize(path.size() - mark.size());
    }
    return path;
}

} // namespace

DWORD GetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD size) {
    // Never destroyed: the job's thread may ask while the process is ending.
    static const std::string& path = *new std::string(readOwnPath());
    if (module != nullptr) {
        return static_cast<DWORD>(fail(ERROR_MOD_NOT_FOUND));
    }
    const std::optional<std::wstring> wide = toWide(path);
    if (!wide) {
        return 0;
    }
    if (wide->empty()) {
        return static_cast<DWORD>(fail(ERROR_PATH_NOT_FOUND));
    }
    if (wide->size() < size) {
        std::wmemcpy(buffer, wide->c_str(), wide->size() + 1);
        ::SetLastError(ERROR_SUCCESS);
        return static_cast<DWORD>(wide->size());
    }
    // Unlike the other calls that return a text, this one cuts it.
    if (size > 0) {
        std::wmemcpy(buffer, wide->c_str(), size - 1);
        buffer[size - 1] = L'\0';
    }
    ::SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return size;
}
