// Which key file this test program believes in.
#pragma once

#include <filesystem>

namespace ca::test {

// Makes the file's digest the pinned one.
void pinKey(const std::filesystem::path& keyFile);

} // namespace ca::test
