// Where things lie in an installation. There is one root, the folder of the running executable, and
// every file has a fixed place below it; nothing here is configurable.
#pragma once

#include <filesystem>
#include <string_view>

namespace ca::install {

inline constexpr std::string_view launcherFileName = "ColdAnchorLauncher.exe";
inline constexpr std::string_view helperFileName = "ColdAnchorUpdateHelper.exe";
inline constexpr std::string_view gameFileName = "ColdAnchor.exe";

// The player's files: where the game kept them once, and where they go without a folder of the
// player's own.
inline constexpr const char* saveFolderName = "save";
inline constexpr const char* userDataFolderName = "userdata";

// With slashes, as a manifest would spell it.
inline constexpr const char* publicKeyPath = "data/update_public_key.pem";

// The folder of the running executable, whatever the working directory is. Falls back to the
// working directory when the system can't name the executable or the name has 32,768
// characters or more. Any thread.
std::filesystem::path executableDir();

// Each takes the installation folder and touches no disk. Any thread.
std::filesystem::path iconFile(const std::filesystem::path& installDir);
std::filesystem::path versionMarkerFile(const std::filesystem::path& installDir);
std::filesystem::path updateServerFile(const std::filesystem::path& installDir);
std::filesystem::path publicKeyFile(const std::filesystem::path& installDir);

} // namespace ca::install
