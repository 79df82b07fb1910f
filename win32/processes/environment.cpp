#include "last_error.h"
#include "text/text_result.h"
#include "text/utf8.h"

#include <cerrno>
#include <cstdlib>
#include <cwchar>
#include <new>
#include <unistd.h>

using namespace ca::win32;

BOOL SetEnvironmentVariableW(LPCWSTR name, LPCWSTR value) {
    const std::optional<std::string> key = name == nullptr ? std::nullopt : toUtf8(name);
    const std::optional<std::string> text = toUtf8(value == nullptr ? L"" : value);
    if (!key || !text) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    // The host itself refuses a name that is empty or has a "=" in it.
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
    // A host's variable may hold any bytes. What isn't UTF-8 can't be told to the launcher.
    const std::optional<std::wstring> wide = toWide(value);
    return wide ? returnText(*wide, buffer, size) : 0;
}

LPWSTR GetEnvironmentStringsW() {
    std::wstring block;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        // A value that isn't UTF-8 is left out, but not the variable: its name counts.
        const std::string_view text = *entry;
        const std::optional<std::wstring> whole = toWide(text);
        const std::optional<std::wstring> wide =
            whole ? whole : toWide(text.substr(0, text.find('=') + 1));
        if (wide && !wide->empty()) {
            block += *wide + L'\0';
        }
    }
    auto* const copy = new (std::nothrow) wchar_t[block.size() + 1];
    if (copy == nullptr) {
        fail(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    std::wmemcpy(copy, block.c_str(), block.size() + 1);
    return copy;
}

BOOL FreeEnvironmentStringsW(LPWSTR block) {
    delete[] block;
    return TRUE;
}
