// Folders. Paths may have any length. Each call blocks on the disk; any thread.
#pragma once

#include "system/system_path.h"

#include <functional>
#include <string>

namespace ca::system {

// Makes the folder and those above it that are missing. False if no folder and no link to one is
// there in the end; what was made above it stays.
bool makeFolders(const SystemPath& folder);

// Makes the folder. False, with the reason as the last error, also when something is there.
bool makeNewFolder(const SystemPath& folder);

// Calls `visit` with the name of everything in the folder, in no order; with nothing for a folder
// that can't be read.
void listFolder(const SystemPath& folder, const std::function<void(const std::wstring&)>& visit);

// Deletes the folder with all that it holds, trying again for two seconds in all. A link in it is
// deleted itself and never followed. What can't be deleted stays. Takes a path without a separator
// at its end.
void removeFolder(const SystemPath& folder);

} // namespace ca::system
