// What is on the disk under a path.
#pragma once

#include <string>
#include <sys/stat.h>

namespace ca::win32 {

// The S_IFMT bits of what has this name, which is S_IFLNK for a symbolic link wherever it leads. 0
// if there is nothing, or nothing that this process may see.
mode_t typeOf(const std::string& path);

// Whether the path leads to a folder, also through a link.
bool isFolder(const std::string& path);

// Whether two names or descriptors, each asked for its status, are of one file.
bool isSameFile(const struct stat& a, const struct stat& b);

} // namespace ca::win32
