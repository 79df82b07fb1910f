// The order of versions: dotted decimal numbers, compared number by number. Pure; any thread.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace ca::update {

// The numbers of `text` up to its first byte that is neither digit nor dot, at least four: missing
// ones are zeros, and so is an empty group. A number beyond 32 bits wraps around.
std::vector<std::int32_t> parseVersion(std::string_view text);

// -1, 0 or 1 as `a` is older than, equal to or newer than `b`. Missing numbers are zeros
// ("1.2" equals "1.2.0.0"), and whatever follows the numbers counts for nothing
// ("1.2.3-rc1" equals "1.2.3").
int compareVersions(std::string_view a, std::string_view b);

} // namespace ca::update
