#include "system/this_process.h"

#include "system/path.h"

#include <vector>
#include <windows.h>

namespace ca::system {

std::filesystem::path executableFile() {
    // The longest path that Windows knows has 32,767 characters; a result of the buffer's size
    // means that it was cut.
    std::vector<wchar_t> buffer(32768);
    const DWORD size = static_cast<DWORD>(buffer.size());
    const DWORD length = ::GetModuleFileNameW(nullptr, buffer.data(), size);
    if (length == 0 || length >= size) {
        return {};
    }
    return pathFromWide(std::wstring(buffer.data(), length));
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
