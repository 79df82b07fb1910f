// Which paths a manifest may name, and what they mean on this system. Pure; any thread.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace ca::update {

// The path with each run of slashes and backslashes as one slash: the spelling by which
// two paths are the same.
std::string genericManifestPath(std::string_view path);

// Whether a manifest may name this file. Safe is a path of 1 to 240 bytes of UTF-8 that is
// relative, holds no colon, no zero byte and no component "." or "..", and lies neither below
// "save", "userdata" or ".coldanchor-update" nor is the channel's key file. Those names are
// compared exactly, case included.
bool isSafeManifestPath(std::string_view path);

// A safe manifest path as a relative path of this system.
std::filesystem::path relativePath(std::string_view manifestPath);

// Whether this is a launcher, by its file name, in whatever folder: a file that no running launcher
// can replace.
bool isLauncherFile(const std::filesystem::path& relative);

} // namespace ca::update
