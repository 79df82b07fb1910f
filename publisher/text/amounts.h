// Numbers for people. Pure; any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace ca::publisher {

// "999 B", "1.2 MB"; a thousand of one unit make the next.
std::string bytesText(std::uint64_t bytes);

// "1 file", "2 files"; `noun` is the singular.
std::string countText(std::size_t count, const std::string& noun);

} // namespace ca::publisher
