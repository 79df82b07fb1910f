#include "install/paths.h"

#include <vector>
#include <windows.h>

namespace ca::install {

namespace fs = std::filesystem;

fs::path executableDir() {
    // The longest path that Windows knows has 32,767 characters; a result of the buffer's size means that it was cut.
    std::vector<wchar_t> buffer(32768);
    const DWORD length = ::GetModuleFileNameW(nullptr, buffer.data(), static_cast<DWORD>(buffer.size()));
    if (length == 0 || length >= buffer.size()) {
        std::error_code ignored;
        return fs::current_path(ignored);
    }
    return fs::path(std::wstring(buffer.data(), length)).parent_path();
}

fs::path pathFromUtf8(std::string_view text) {
    return fs::path(std::u8string(text.begin(), text.end()));
}

std::string utf8FromPath(const fs::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

bool pathExists(const fs::path& path) {
    std::error_code ignored;
    return fs::exists(fs::status(path, ignored));
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
    return installDir / "data" / "update_public_key.pem";
}

} // namespace ca::install
