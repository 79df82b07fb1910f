// Paths and texts. A path is of the system's own kind: wide on Windows, UTF-8 elsewhere, whatever
// the locale. A name that is no valid Unicode stays what it is as long as it stays a path.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace ca::system {

// Where paths are wide, what isn't UTF-8 becomes U+FFFD, and so does on the way back what is no
// Unicode character. Pure; any thread.
std::filesystem::path pathFromUtf8(std::string_view text);
std::string utf8FromPath(const std::filesystem::path& path);

// For command lines and for what the system returns. Pure; any thread.
std::wstring wideFromPath(const std::filesystem::path& path);
std::filesystem::path pathFromWide(const std::wstring& wide);

} // namespace ca::system
