#include "update/manifest_path.h"

#include "install/paths.h"

#include <algorithm>
#include <windows.h>

namespace ca::update {

namespace {

constexpr std::size_t longestPath = 240; // bytes; the channel's own bound

bool isSeparator(char c) {
    return c == '/' || c == '\\';
}

bool isUtf8(std::string_view text) {
    const bool ascii =
        std::all_of(text.begin(), text.end(), [](unsigned char c) { return c < 0x80; });
    return ascii || ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(),
                                          static_cast<int>(text.size()), nullptr, 0) != 0;
}

bool hasDotComponent(std::string_view generic) {
    while (!generic.empty()) {
        const std::size_t end = std::min(generic.find('/'), generic.size());
        const std::string_view component = generic.substr(0, end);
        if (component == "." || component == "..") {
            return true;
        }
        generic.remove_prefix(std::min(end + 1, generic.size()));
    }
    return false;
}

} // namespace

std::string genericManifestPath(std::string_view path) {
    std::string generic(path);
    std::replace(generic.begin(), generic.end(), '\\', '/');
    const auto end = std::unique(generic.begin(), generic.end(),
                                 [](char a, char b) { return a == '/' && b == '/'; });
    generic.erase(end, generic.end());
    return generic;
}

bool isSafeManifestPath(std::string_view path) {
    if (path.empty() || path.size() > longestPath || isSeparator(path.front())) {
        return false;
    }
    // No colon: neither drives nor alternate streams. No zero byte: the system's calls would see
    // another, shorter path.
    if (path.find_first_of(std::string_view(":\0", 2)) != std::string_view::npos || !isUtf8(path)) {
        return false;
    }
    const std::string generic = genericManifestPath(path);
    return !hasDotComponent(generic) && !generic.starts_with("save/") &&
           !generic.starts_with("userdata/") && !generic.starts_with(".coldanchor-update/") &&
           generic != "data/update_public_key.pem";
}

std::filesystem::path relativePath(std::string_view manifestPath) {
    return install::pathFromUtf8(genericManifestPath(manifestPath));
}

} // namespace ca::update
