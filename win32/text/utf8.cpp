#include "text/utf8.h"

#include "last_error.h"

#include <algorithm>

namespace ca::win32 {

namespace {

constexpr char32_t replacement = 0xFFFD;
constexpr char32_t firstBeyondAscii = 0x80;

void append(std::string& text, char32_t character) {
    const auto add = [&](char32_t byte) { text.push_back(static_cast<char>(byte)); };
    if (character < firstBeyondAscii) {
        add(character);
        return;
    }
    if (character < 0x800) {
        add(0xC0U | (character >> 6U));
    } else if (character < 0x10000) {
        add(0xE0U | (character >> 12U));
        add(0x80U | ((character >> 6U) & 0x3FU));
    } else {
        add(0xF0U | (character >> 18U));
        add(0x80U | ((character >> 12U) & 0x3FU));
        add(0x80U | ((character >> 6U) & 0x3FU));
    }
    add(0x80U | (character & 0x3FU));
}

} // namespace

DecodedCharacter decodeFirst(std::string_view text) {
    const auto byteAt = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    const unsigned char lead = byteAt(0);
    if (lead < firstBeyondAscii) {
        return {lead, 1, true};
    }
    // C0 and C1 could only begin an overlong form, F5 and above only what is beyond U+10FFFF.
    if (lead < 0xC2 || lead > 0xF4) {
        return {replacement, 1, false};
    }
    const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    // The second byte's range keeps out overlong forms, surrogates and all beyond U+10FFFF.
    unsigned char low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    unsigned char high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    char32_t character = lead & (0x7FU >> length);
    for (std::size_t index = 1; index < length; ++index) {
        if (index == text.size() || byteAt(index) < low || byteAt(index) > high) {
            return {replacement, index, false};
        }
        character = (character << 6U) | (byteAt(index) & 0x3FU);
        low = 0x80;
        high = 0xBF;
    }
    return {character, length, true};
}

bool isUnicode(char32_t character) {
    return character <= 0x10FFFF && (character < 0xD800 || character > 0xDFFF);
}

std::optional<std::string> toUtf8(std::wstring_view wide) {
    // Most paths are ASCII up to a file's own name, and a check converts one for each file.
    const auto ascii = std::find_if(wide.begin(), wide.end(), [](wchar_t character) {
        return static_cast<char32_t>(character) >= firstBeyondAscii;
    });
    std::string text(static_cast<std::size_t>(ascii - wide.begin()), '\0');
    std::transform(wide.begin(), ascii, text.begin(),
                   [](wchar_t character) { return static_cast<char>(character); });
    // Enough for ASCII. Beyond it the text grows by itself.
    text.reserve(wide.size());
    for (const wchar_t wideCharacter : wide.substr(text.size())) {
        const auto character = static_cast<char32_t>(wideCharacter);
        if (!isUnicode(character)) {
            fail(ERROR_INVALID_NAME);
            return std::nullopt;
        }
        append(text, character);
    }
    return text;
}

std::optional<std::wstring> toWide(std::string_view utf8) {
    std::wstring wide;
    wide.reserve(utf8.size());
    while (!utf8.empty()) {
        const DecodedCharacter next = decodeFirst(utf8);
        if (!next.valid) {
            fail(ERROR_NO_UNICODE_TRANSLATION);
            return std::nullopt;
        }
        wide.push_back(static_cast<wchar_t>(next.character));
        utf8.remove_prefix(next.length);
    }
    return wide;
}

} // namespace ca::win32
