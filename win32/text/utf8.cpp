#include "host.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <cwchar>

namespace {

constexpr char32_t replacement = 0xFFFD;

struct Decoded {
    char32_t character;
    // bytes taken: of an ill-formed sequence, those that could have begun a well-formed one
    std::size_t length;
    bool valid;
};

Decoded decode(std::string_view text) {
    const auto byteAt = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    const unsigned char lead = byteAt(0);
    if (lead < 0x80) {
        return {lead, 1, true};
    }
    if (lead < 0xC2 || lead > 0xF4) {
        return {replacement, 1, false};
    }
    const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    // The second byte's range is what keeps out overlong forms, surrogates and
    // everything beyond U+10FFFF.
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

} // namespace

int MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR bytes, int byteCount, LPWSTR wide,
                        int wideCount) {
    using ca::win32::fail;
    if (codePage != CP_UTF8 || bytes == nullptr || byteCount == 0 || byteCount < -1 ||
        wideCount < 0 || (wide == nullptr && wideCount > 0)) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    if ((flags & ~MB_ERR_INVALID_CHARS) != 0) {
        return fail(ERROR_INVALID_FLAGS);
    }
    std::string_view rest(bytes, byteCount == -1 ? std::strlen(bytes) + 1
                                                 : static_cast<std::size_t>(byteCount));
    int count = 0;
    while (!rest.empty()) {
        // by far the most
        if (count < wideCount && static_cast<unsigned char>(rest.front()) < 0x80) {
            wide[count++] = rest.front();
            rest.remove_prefix(1);
            continue;
        }
        const Decoded next = decode(rest);
        if (!next.valid && flags == MB_ERR_INVALID_CHARS) {
            return fail(ERROR_NO_UNICODE_TRANSLATION);
        }
        if (count == INT_MAX) {
            return fail(ERROR_INVALID_PARAMETER);
        }
        if (wideCount > 0) {
            if (count == wideCount) {
                return fail(ERROR_INSUFFICIENT_BUFFER);
            }
            wide[count] = static_cast<wchar_t>(next.character);
        }
        ++count;
        rest.remove_prefix(next.length);
    }
    return count;
}

int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR wide, int wideCount, LPSTR bytes,
                        int byteCount, LPCSTR defaultCharacter, BOOL* defaultUsed) {
    using ca::win32::fail;
    if (codePage != CP_UTF8 || wide == nullptr || wideCount == 0 || wideCount < -1 ||
        byteCount < 0 || (bytes == nullptr && byteCount > 0) || defaultCharacter != nullptr ||
        defaultUsed != nullptr) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    if (flags != 0) {
        return fail(ERROR_INVALID_FLAGS);
    }
    std::wstring text(wide, wideCount == -1 ? std::wcslen(wide) + 1
                                            : static_cast<std::size_t>(wideCount));
    for (wchar_t& character : text) {
        if (!ca::win32::toUtf8({&character, 1})) {
            character = L'\uFFFD';
        }
    }
    const std::string utf8 = ca::win32::toUtf8(text).value_or(std::string());
    if (byteCount > 0 && utf8.size() > static_cast<std::size_t>(byteCount)) {
        return fail(ERROR_INSUFFICIENT_BUFFER);
    }
    if (byteCount > 0) {
        std::copy(utf8.begin(), utf8.end(), bytes);
    }
    return static_cast<int>(utf8.size());
}

namespace ca::win32 {

std::optional<std::string> toUtf8(std::wstring_view wide) {
    // Most paths are ASCII up to a file's own name, and a check converts one for each file.
    const auto ascii = std::find_if(wide.begin(), wide.end(),
                                    [](wchar_t c) { return static_cast<char32_t>(c) >= 0x80; });
    std::string text(static_cast<std::size_t>(ascii - wide.begin()), '\0');
    std::transform(wide.begin(), ascii, text.begin(),
                   [](wchar_t c) { return static_cast<char>(c); });
    text.reserve(wide.size());
    for (const wchar_t wideCharacter : wide.substr(text.size())) {
        const auto character = static_cast<char32_t>(wideCharacter);
        if (character > 0x10FFFF || (character >= 0xD800 && character <= 0xDFFF)) {
            fail(ERROR_INVALID_NAME);
            return std::nullopt;
        }
        const auto append = [&](char32_t byte) { text.push_back(static_cast<char>(byte)); };
        if (character < 0x80) {
            append(character);
            continue;
        }
        if (character < 0x800) {
            append(0xC0U | (character >> 6U));
        } else {
            if (character < 0x10000) {
                append(0xE0U | (character >> 12U));
            } else {
                append(0xF0U | (character >> 18U));
                append(0x80U | ((character >> 12U) & 0x3FU));
            }
            append(0x80U | ((character >> 6U) & 0x3FU));
        }
        append(0x80U | (character & 0x3FU));
    }
    return text;
}

std::optional<std::string> toPath(LPCWSTR wide) {
    if (wide == nullptr || *wide == L'\0') {
        fail(ERROR_PATH_NOT_FOUND);
        return std::nullopt;
    }
    return toUtf8(wide);
}

std::optional<std::wstring> toWide(std::string_view utf8) {
    std::wstring wide;
    wide.reserve(utf8.size());
    while (!utf8.empty()) {
        const Decoded next = decode(utf8);
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
