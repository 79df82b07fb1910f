#include "system/path.h"

#include "system/call_path.h"

#include <windows.h>

namespace ca::system {

namespace fs = std::filesystem;

fs::path pathFromUtf8(std::string_view text) {
    return fs::path(std::u8string(text.begin(), text.end()));
}

fs::path fullPath(const fs::path& path) {
    const std::wstring given = callPath(path);
    // The first call returns the size with the zero at the end, the second one the length.
    const DWORD size = ::GetFullPathNameW(given.c_str(), 0, nullptr, nullptr);
    std::wstring full(size, L'\0');
    if (size != 0) {
        full.resize(::GetFullPathNameW(given.c_str(), size, full.data(), nullptr));
    }
    return pathFromWide(full);
}

} // namespace ca::system
