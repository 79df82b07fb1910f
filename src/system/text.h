// Texts in this program are UTF-8; the system's calls take and return wide ones. Pure; any thread.
#pragma once

#include <string>
#include <string_view>

namespace ca::system {

bool isUtf8(std::string_view text);

// Bytes that aren't UTF-8 become U+FFFD.
std::wstring wideFromUtf8(std::string_view text);

// Units that are no Unicode character, such as half of a surrogate pair, become U+FFFD.
std::string utf8FromWide(std::wstring_view wide);

} // namespace ca::system
