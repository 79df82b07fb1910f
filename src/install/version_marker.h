// The version marker "data/game_version": the launcher's record of which game version is installed.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace ca::install {

// What an installation without a marker counts as: the first version that shipped with a launcher.
inline constexpr std::string_view builtInVersion = "0.16.117";

// The marker's text without whitespace at its ends, or `builtInVersion` when there is none.
// Never empty, never fails. The form of the text isn't tested. Blocks on the disk; any
// thread, no lock needed.
std::string readInstalledVersion(const std::filesystem::path& installDir);

// Makes `version` and one line feed the marker's whole content; see writeTextFile for
// what a failure leaves.
bool writeInstalledVersion(const std::filesystem::path& installDir, std::string_view version);

} // namespace ca::install
