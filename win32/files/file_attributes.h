// A file's attributes from the host's status of it.
#pragma once

#include <string>
#include <sys/stat.h>
#include <windows.h>

namespace ca::win32 {

// The attributes that GetFileAttributesW returns, of what lstat told about `path`.
DWORD attributesOf(const struct stat& status, const std::string& path);

} // namespace ca::win32
