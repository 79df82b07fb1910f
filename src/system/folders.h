// Folders. Paths may have any length. Each call blocks on the disk; any thread.
#pragma once

#include <filesystem>

namespace ca::system {

// Makes the folder and those above it that are missing. False if no folder and no link to one is
// there in the end; what was made above it stays.
bool makeFolders(const std::filesystem::path& folder);

// Deletes the folder with all that it holds, trying each for two seconds. A link in it is
// deleted itself and never followed. What can't be deleted stays.
void removeFolder(const std::filesystem::path& folder);

} // namespace ca::system
