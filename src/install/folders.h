// Folders by their full wide paths, whatever the length. Calls the system alone, since the update
// helper goes without every other library. Any thread; blocks on the disk.
#pragma once

#include <string>

namespace ca::install {

// Windows takes a full path in this form without its limit of 260 characters. What isn't a
// drive's path stays as it is.
std::wstring withoutLimit(const std::wstring& path);

// Whether the path itself is a link to somewhere else; a link on the way would lead a
// write or a removal out of the installation. False also for what is missing, and when
// the system doesn't tell.
bool isLink(const std::wstring& path);

// Makes the folder and those above it that are missing. False if no folder and no link to one
// stands there in the end.
bool makeFolders(const std::wstring& folder);

// Deletes the folder with all that it holds, trying each for two seconds. A link in it is deleted
// itself and never followed. What can't be deleted stays. Takes a path without a separator at its
// end, of one kind of separator alone where it is in the form without a limit.
void removeFolder(const std::wstring& folder);

} // namespace ca::install
