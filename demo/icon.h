// The launcher's icon, drawn by computation: a red anchor on a dark round square.
#pragma once

#include <filesystem>

namespace ca::demo {

// Writes a PNG of `size` by `size` pixels. Throws std::runtime_error.
void writeIcon(const std::filesystem::path& path, int size);

} // namespace ca::demo
