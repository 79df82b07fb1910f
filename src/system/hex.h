// Bytes as hexadecimal digits, two a byte, the high one first. Pure; any thread.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ca::system {

// In lower case.
std::string hexText(std::span<const unsigned char> bytes);

// Reads digits of either case. False for an odd number of characters and for any other character;
// `bytes` then holds anything.
bool bytesFromHex(std::string_view text, std::vector<unsigned char>& bytes);

} // namespace ca::system
