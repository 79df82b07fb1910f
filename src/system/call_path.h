// How this folder's sources give a path to the system. Nobody else needs it: every function here
// takes paths as they are.
#pragma once

#include <filesystem>
#include <string>

namespace ca::system {

// The path as the system's calls take it, whatever its length. Pure; any thread.
std::wstring callPath(const std::filesystem::path& path);

} // namespace ca::system
