#include "system/this_process.h"

#include "system/executable_name.h"
#include "system/path.h"

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

} // namespace ca::system
