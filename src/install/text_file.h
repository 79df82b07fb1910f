// The short text files of an installation: read whole, trimmed, and written so that a
// reader never sees a half.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace ca::install {

// The whole file as bytes: no decoding, no change of line ends, no limit but memory. Empty when the
// file can't be opened, so a caller can't tell a missing file from an empty one and must not need
// to. Blocks on the disk; any thread.
std::string readTextFile(const std::filesystem::path& path);

// `text` without the blanks, tabs, line feeds, vertical tabs, form feeds and carriage returns at
// both ends. Bytes from 128 up never count as whitespace, a byte order mark included. The result
// points into `text`. Pure; any thread.
std::string_view trimText(std::string_view text);

// Replaces the file's content with `text`, making missing parent folders. The bytes go to
// "<name>.<process id>.new" beside the file, are flushed to the disk and then renamed over it, so
// after a failure or a power cut the file is the old one or the new one, whole. Readers on other
// threads and in other processes may have the old one open: the rename is tried again for two
// seconds. False when any of it fails; the old file is then unchanged. Blocks on the disk; one
// writer at a time in this process.
bool writeTextFile(const std::filesystem::path& path, std::string_view text);

} // namespace ca::install
