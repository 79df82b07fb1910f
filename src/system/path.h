// Paths and texts. A path is of the system's own kind: wide on Windows, UTF-8 elsewhere, whatever
// the locale. A name that is no valid Unicode stays what it is as long as it stays a path.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace ca::system {

// Raises std::system_error for a text that isn't UTF-8 where paths are wide. Pure; any thread.
std::filesystem::path pathFromUtf8(std::string_view text);

// What is no Unicode character in a wide name becomes U+FFFD. Pure; any thread.
std::string utf8FromPath(const std::filesystem::path& path);

// For command lines and for what the system returns. Pure; any thread.
std::wstring wideFromPath(const std::filesystem::path& path);
std::filesystem::path pathFromWide(const std::wstring& wide);

// The path from the root on, with "." and ".." resolved by their names and one kind of separator;
// empty when the system refuses it. Asks for the working directory, not for the disk. Any thread.
std::filesystem::path fullPath(const std::filesystem::path& path);

} // namespace ca::system
