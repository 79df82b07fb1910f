// UTF-8 and the host's wide characters, which hold one code point each.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ca::win32 {

// The first character of a UTF-8 text.
struct DecodedCharacter {
    char32_t character; // U+FFFD if it isn't valid
    // Bytes taken. Of an ill-formed sequence: those that could have begun a well-formed one, at
    // least one.
    std::size_t length;
    bool valid;
};

// `text` isn't empty.
DecodedCharacter decodeFirst(std::string_view text);

// Whether a Unicode text can hold the character: no surrogate, nothing beyond U+10FFFF.
bool isUnicode(char32_t character);

// UTF-8 of a wide text. Characters that no Unicode text holds make the result empty with
// ERROR_INVALID_NAME as the last error.
std::optional<std::string> toUtf8(std::wstring_view wide);

// The wide text of well-formed UTF-8; empty with ERROR_NO_UNICODE_TRANSLATION for any other.
std::optional<std::wstring> toWide(std::string_view utf8);

} // namespace ca::win32
