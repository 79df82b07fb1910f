// Where things lie in an installation. There is one root, the folder of the running executable, and
// every file has a fixed place below it; nothing here is configurable.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace ca::install {

inline constexpr std::string_view launcherFileName = "ColdAnchorLauncher.exe";
inline constexpr std::string_view helperFileName = "ColdAnchorUpdateHelper.exe";
inline constexpr std::string_view gameFileName = "ColdAnchor.exe";
inline constexpr const char* workFolderName = ".coldanchor-update";

// The player's files: where the game kept them once, and where they go without a folder of the
// player's own.
inline constexpr const char* saveFolderName = "save";
inline constexpr const char* userDataFolderName = "userdata";

// With slashes, as a manifest would spell it.
inline constexpr const char* publicKeyPath = "data/update_public_key.pem";

// An environment variable that the update helper sets for a launcher that it starts again, because
// the new one couldn't take its place. Such a launcher doesn't hand over once more, or the two
// would start each other without end.
inline constexpr const wchar_t* selfUpdateFailedVariable = L"COLDANCHOR_SELF_UPDATE_FAILED";

// The folder of the running executable, whatever the working directory is. Falls back to the
// working directory when the system can't name the executable or the name has 32,768
// characters or more. Any thread.
std::filesystem::path executableDir();

// Texts in this program are UTF-8, paths are the system's own kind. Any thread.
// `pathFromUtf8` raises std::system_error for a text that isn't UTF-8 where the
// system's paths are wide.
std::filesystem::path pathFromUtf8(std::string_view text);
// `utf8FromPath` never fails: what is no Unicode character in a wide name becomes U+FFFD.
std::string utf8FromPath(const std::filesystem::path& path);

// The system's calls take and give wide text. Where paths are wide themselves they pass
// through unchanged, a name that is no valid Unicode included; elsewhere they are UTF-8,
// whatever the locale. Any thread.
std::wstring wideFromPath(const std::filesystem::path& path);
// As wideFromPath, for the system's calls on files and folders. Windows takes paths of 260
// characters only where it is set up for them, and folders even earlier; from 240 on, a full path
// comes in the form that knows no such limit.
std::wstring systemPath(const std::filesystem::path& path);
std::filesystem::path pathFromWide(const std::wstring& wide);
std::wstring wideFromUtf8(std::string_view text); // bytes that aren't UTF-8 become U+FFFD

// Whether something stands there, of any kind; whether a file does. Links are followed. A path
// whose status can't be read counts as absent. Asks the disk.
bool pathExists(const std::filesystem::path& path);
bool isFile(const std::filesystem::path& path);

// Each takes the installation folder and touches no disk. Any thread.
std::filesystem::path iconFile(const std::filesystem::path& installDir);
std::filesystem::path versionMarkerFile(const std::filesystem::path& installDir);
std::filesystem::path updateServerFile(const std::filesystem::path& installDir);
std::filesystem::path publicKeyFile(const std::filesystem::path& installDir);

} // namespace ca::install
