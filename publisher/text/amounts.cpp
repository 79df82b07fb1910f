#include "publisher/text/amounts.h"

#include <array>
#include <cstdio>

namespace ca::publisher {

std::string bytesText(std::uint64_t bytes) {
    constexpr std::array units{"B", "kB", "MB", "GB", "TB"};
    auto value = static_cast<double>(bytes);
    std::size_t unit = 0;
    for (; value >= 999.95 && unit + 1 < units.size(); ++unit) {
        value /= 1000;
    }
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), unit == 0 ? "%.0f %s" : "%.1f %s", value, units[unit]);
    return text.data();
}

std::string countText(std::size_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

} // namespace ca::publisher
