#include "host.h"

#include <climits>
#include <cstdlib>
#include <cwchar>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace ca::win32;

constexpr const char* selfLink = "/proc/self/exe";

bool sameFile(const char* a, const char* b) {
    struct stat first {};
    struct stat second {};
    return ::stat(a, &first) == 0 && ::stat(b, &second) == 0 && first.st_dev == second.st_dev &&
           first.st_ino == second.st_ino;
}

std::string readOwnPath() {
    std::string path(PATH_MAX, '\0');
    const ssize_t length = ::readlink(selfLink, path.data(), path.size());
    path.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    // The kernel's mark for a file that another has taken the place of, or else part of the name.
    constexpr std::string_view mark = " (deleted)";
    if (path.ends_with(mark) && !sameFile(selfLink, path.c_str())) {
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
        SetLastError(ERROR_SUCCESS);
        return static_cast<DWORD>(wide->size());
    }
    if (size > 0) {
        std::wmemcpy(buffer, wide->c_str(), size - 1);
        buffer[size - 1] = L'\0';
    }
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return size;
}

DWORD GetCurrentProcessId() {
    return static_cast<DWORD>(::getpid());
}

BOOL SetEnvironmentVariableW(LPCWSTR name, LPCWSTR value) {
    const std::optional<std::string> key = name == nullptr ? std::nullopt : toUtf8(name);
    const std::optional<std::string> text = toUtf8(value == nullptr ? L"" : value);
    if (!key || !text) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    const int result =
        value == nullptr ? ::unsetenv(key->c_str()) : ::setenv(key->c_str(), text->c_str(), 1);
    return result == 0 ? TRUE : fail(errorFromErrno(errno));
}

DWORD GetEnvironmentVariableW(LPCWSTR name, LPWSTR buffer, DWORD size) {
    const std::optional<std::string> key = name == nullptr ? std::nullopt : toUtf8(name);
    const char* value = key ? std::getenv(key->c_str()) : nullptr;
    if (value == nullptr) {
        return static_cast<DWORD>(fail(ERROR_ENVVAR_NOT_FOUND));
    }
    const std::optional<std::wstring> wide = toWide(value);
    if (!wide) {
        return 0;
    }
    if (wide->size() >= size) {
        return static_cast<DWORD>(wide->size() + 1);
    }
    std::wmemcpy(buffer, wide->c_str(), wide->size() + 1);
    return static_cast<DWORD>(wide->size());
}
