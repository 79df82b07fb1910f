// Paths where they are UTF-8, as on hosts other than Windows.
#include "system/path.h"
#include "system/text.h"

namespace ca::system {

namespace fs = std::filesystem;

fs::path pathFromUtf8(std::string_view text) {
    return text;
}

std::string utf8FromPath(const fs::path& path) {
    return path.native();
}

std::wstring wideFromPath(const fs::path& path) {
    return wideFromUtf8(path.native());
}

fs::path pathFromWide(const std::wstring& wide) {
    return utf8FromWide(wide);
}

} // namespace ca::system
