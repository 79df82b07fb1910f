// Paths as the host takes them, and what a failing call on one means to Windows' callers.
#pragma once

#include <optional>
#include <string>
#include <windows.h>

namespace ca::win32 {

// UTF-8 of a zero-terminated text that the host will take for a path or a name. As on Windows, null
// and the empty text are refused, with ERROR_PATH_NOT_FOUND; a text that is no Unicode fails as
// toUtf8 does.
std::optional<std::string> toPath(LPCWSTR wide);

// The folder that a path is in, with a "/" behind it; "." for a bare name.
std::string folderOf(const std::string& path);

// Sets the last error for the errno value that a call on `path` left, and returns FALSE. A missing
// name is told from a missing folder above it.
BOOL failOnPath(int number, const std::string& path);

// The result of a host's call on `path` that returned `result`: TRUE for 0, else as failOnPath has
// it for errno.
BOOL resultOnPath(int result, const std::string& path);

} // namespace ca::win32
