#include "system/this_process.h"

#include "system/executable_name.h"
#include "system/path.h"

#include <cwchar>
#include <windows.h>

namespace ca::system {

std::filesystem::path executableFile() {
    return pathFromWide(executableName());
}

std::wstring environmentValue(const wchar_t* name) {
    // The first call returns the size with the zero at the end, the second one the length.
    const DWORD size = ::GetEnvironmentVariableW(name, nullptr, 0);
    std::wstring value(size, L'\0');
    if (size != 0) {
        value.resize(::GetEnvironmentVariableW(name, value.data(), size));
    }
    return value;
}

std::vector<std::wstring> environmentNames() {
    std::vector<std::wstring> names;
    wchar_t* const block = ::GetEnvironmentStringsW();
    if (block == nullptr) {
        return names;
    }
    for (const wchar_t* entry = block; *entry != L'\0'; entry += std::wcslen(entry) + 1) {
        // Windows keeps the working directory of each drive under a name that begins with "=".
        const std::wstring text = entry;
        names.push_back(text.substr(0, text.find(L'=', 1)));
    }
    ::FreeEnvironmentStringsW(block);
    return names;
}

} // namespace ca::system
