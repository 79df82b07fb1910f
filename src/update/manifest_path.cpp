#include "update/manifest_path.h"

#include "install/paths.h"
#include "system/path.h"
#include "system/text.h"
#include "update/channel.h"

#include <algorithm>

namespace ca::update {

namespace {

bool isSeparator(char c) {
    return c == '/' || c == '\\';
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

bool isProtected(std::string_view generic) {
    const auto reachesInto = [generic](std::string_view folder) {
        return generic.starts_with(folder) && generic.substr(folder.size()).starts_with('/');
    };
    return generic == protectedFile ||
           std::any_of(protectedFolders.begin(), protectedFolders.end(), reachesInto);
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
    if (path.empty() || path.size() > longestManifestPath || isSeparator(path.front())) {
        return false;
    }
    // No colon: neither drives nor alternate streams. No zero byte: the system's calls would see
    // another, shorter path.
    if (path.find_first_of(std::string_view(":\0", 2)) != std::string_view::npos ||
        !system::isUtf8(path)) {
        return false;
    }
    const std::string generic = genericManifestPath(path);
    return !hasDotComponent(generic) && !isProtected(generic);
}

std::filesystem::path relativePath(std::string_view manifestPath) {
    return system::pathFromUtf8(genericManifestPath(manifestPath));
}

bool isLauncherFile(const std::filesystem::path& relative) {
    return relative.filename() == install::launcherFileName;
}

} // namespace ca::update
