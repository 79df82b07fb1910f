// What is at a path. Links are followed, and a path whose status can't be read counts as absent.
// Paths may have any length. Blocks on the disk; any thread.
#pragma once

#include <filesystem>

namespace ca::system {

// Whether something is there, of any kind.
bool pathExists(const std::filesystem::path& path);

// Whether a regular file is there.
bool isFile(const std::filesystem::path& path);

} // namespace ca::system
