#include "install/paths.h"

#include "system/this_process.h"

namespace ca::install {

namespace fs = std::filesystem;

fs::path executableDir() {
    const fs::path executable = system::executableFile();
    if (executable.empty()) {
        // Better a wrong folder, in which nothing is found, than no launcher.
        std::error_code ignored;
        return fs::current_path(ignored);
    }
    return executable.parent_path();
}

fs::path iconFile(const fs::path& installDir) {
    return installDir / "assets" / "launcher" / "cold_anchor_launcher.png";
}

fs::path versionMarkerFile(const fs::path& installDir) {
    return installDir / "data" / "game_version";
}

fs::path updateServerFile(const fs::path& installDir) {
    return installDir / "data" / "update_server.txt";
}

fs::path publicKeyFile(const fs::path& installDir) {
    return installDir / fs::path(publicKeyPath).make_preferred();
}

} // namespace ca::install
