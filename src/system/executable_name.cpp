#include "system/executable_name.h"

#include <windows.h>

namespace ca::system {

std::wstring executableName() {
    // The longest path that Windows knows has 32,767 characters; a result of the buffer's size
    // means that it was cut.
    std::wstring name(32768, L'\0');
    const DWORD size = static_cast<DWORD>(name.size());
    const DWORD length = ::GetModuleFileNameW(nullptr, name.data(), size);
    name.resize(length < size ? length : 0);
    return name;
}

} // namespace ca::system
