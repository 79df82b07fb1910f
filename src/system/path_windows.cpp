// Paths where they are wide texts, as on Windows.
#include "system/call_path.h"
#include "system/path.h"
#include "system/text.h"

namespace ca::system {

namespace fs = std::filesystem;

namespace {

// Windows takes paths of 260 characters only where it is set up for them. It wants room for a short
// name below a folder, so folders end even earlier.
constexpr std::size_t longestPlainPath = 239;

} // namespace

std::wstring callPath(const fs::path& path) {
    if (path.native().size() <= longestPlainPath) {
        return path.native();
    }
    // Behind this prefix Windows knows no limit for a path on a drive. It takes the text literally
    // then, so only its own separator separates.
    const std::wstring preferred = fs::path(path).make_preferred().native();
    const bool isOnDrive = preferred[1] == L':';
    return isOnDrive ? L"\\\\?\\" + preferred : preferred;
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
