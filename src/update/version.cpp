#include "update/version.h"

#include <algorithm>

namespace ca::update {

std::vector<std::int32_t> parseVersion(std::string_view text) {
    std::vector<std::int32_t> numbers;
    std::uint32_t group = 0; // unsigned, because its overflow is defined
    bool digitSeen = false;
    for (const char c : text) {
        if (c >= '0' && c <= '9') {
            group = group * 10 + static_cast<std::uint32_t>(c - '0');
            digitSeen = true;
        } else if (c == '.') {
            numbers.push_back(static_cast<std::int32_t>(group));
            group = 0;
            digitSeen = false;
        } else {
            break; // a suffix such as "-rc1" counts for nothing
        }
    }
    if (digitSeen || !numbers.empty()) {
        numbers.push_back(static_cast<std::int32_t>(group));
    }
    constexpr std::size_t fewest = 4; // as Windows' own version numbers have
    numbers.resize(std::max(numbers.size(), fewest));
    return numbers;
}

int compareVersions(std::string_view a, std::string_view b) {
    std::vector<std::int32_t> left = parseVersion(a);
    std::vector<std::int32_t> right = parseVersion(b);
    const std::size_t count = std::max(left.size(), right.size());
    left.resize(count);
    right.resize(count);
    if (left == right) {
        return 0;
    }
    return left < right ? -1 : 1;
}

} // namespace ca::update
