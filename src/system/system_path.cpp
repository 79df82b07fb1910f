#include "system/system_path.h"

#include <algorithm>

namespace ca::system {

namespace {

// Windows takes paths of 260 characters only where it is set up for them. It wants room for a short
// name below a folder, so folders end even earlier.
constexpr std::size_t longestPlainPath = 239;

// Behind this prefix Windows knows no limit. It takes the text literally then, so only its own
// separator separates.
constexpr const wchar_t* unlimitedPrefix = L"\\\\?\\";

bool isOnDrive(const std::wstring& path) {
    return path.size() > 1 && path[1] == L':';
}

} // namespace

SystemPath::SystemPath(const std::wstring& path) : text_(path) {
    if (text_.size() > longestPlainPath && isOnDrive(text_)) {
        text_.insert(0, unlimitedPrefix);
    }
    // Some shells start programs by a path that has the prefix already.
    if (text_.starts_with(unlimitedPrefix)) {
        std::replace(text_.begin(), text_.end(), L'/', L'\\');
    }
}

} // namespace ca::system
