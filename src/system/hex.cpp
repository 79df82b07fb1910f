#include "system/hex.h"

#include <charconv>

namespace ca::system {

std::string hexText(std::span<const unsigned char> bytes) {
    constexpr char digits[] = "0123456789abcdef";
    std::string text;
    text.reserve(2 * bytes.size());
    for (const unsigned char byte : bytes) {
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}

bool bytesFromHex(std::string_view text, std::vector<unsigned char>& bytes) {
    if (text.size() % 2 != 0) {
        return false;
    }
    bytes.clear();
    bytes.reserve(text.size() / 2);
    const char* const end = text.data() + text.size();
    for (const char* digits = text.data(); digits != end; digits += 2) {
        unsigned char byte = 0;
        if (std::from_chars(digits, digits + 2, byte, 16).ptr != digits + 2) {
            return false;
        }
        bytes.push_back(byte);
    }
    return true;
}

} // namespace ca::system
