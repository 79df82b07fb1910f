// Paths where they are wide texts, as on Windows.
#include "system/path.h"
#include "system/text.h"

namespace ca::system {

namespace fs = std::filesystem;

fs::path pathFromUtf8(std::string_view text) {
    return wideFromUtf8(text);
}

std::string utf8FromPath(const fs::path& path) {
    return utf8FromWide(path.native());
}

std::wstring wideFromPath(const fs::path& path) {
    return path.native();
}

fs::path pathFromWide(const std::wstring& wide) {
    return wide;
}

} // namespace ca::system
