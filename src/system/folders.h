// Folders. Paths may have any length. Each call blocks on the disk; any thread.
#pragma once

#include "system/system_path.h"

namespace ca::system {

// Makes the folder and those above it that are missing. False if no folder and no link to one is
// there in the end; what was made above it stays.
bool makeFolders(const SystemPath& folder);

// Deletes the folder with all that it holds, trying each for two seconds. A link in it is
// deleted itself and never followed. What can't be deleted stays. Takes a path without a separator
// at its end.
void removeFolder(const SystemPath& folder);

} // namespace ca::system
