#include "install/version_marker.h"

#include "install/paths.h"
#include "install/text_file.h"

namespace ca::install {

std::string readInstalledVersion(const std::filesystem::path& installDir) {
    const std::string text = readTextFile(versionMarkerFile(installDir));
    const std::string_view version = trimText(text);
    // Trimmed, because a marker that was written by hand may end in any way.
    return std::string(version.empty() ? builtInVersion : version);
}

bool writeInstalledVersion(const std::filesystem::path& installDir, std::string_view version) {
    return writeTextFile(versionMarkerFile(installDir), std::string(version) + "\n");
}

} // namespace ca::install
