#include "last_error.h"
#include "text/utf8.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <cwchar>

namespace {

using namespace ca::win32;

// A count of -1 stands for the text with its zero, which is then converted like any character.
std::string_view textOf(LPCSTR bytes, int count) {
    return {bytes, count == -1 ? std::strlen(bytes) + 1 : static_cast<std::size_t>(count)};
}

std::wstring_view textOf(LPCWSTR wide, int count) {
    return {wide, count == -1 ? std::wcslen(wide) + 1 : static_cast<std::size_t>(count)};
}

// The number of characters, which `wide` holds unless its size is 0.
int convert(std::string_view text, bool strictly, LPWSTR wide, int wideCount) {
    int count = 0;
    while (!text.empty()) {
        // Nearly every character of a real text is ASCII.
        if (count < wideCount && static_cast<unsigned char>(text.front()) < 0x80) {
            wide[count++] = text.front();
            text.remove_prefix(1);
            continue;
        }
        const DecodedCharacter next = decodeFirst(text);
        if (!next.valid && strictly) {
            return fail(ERROR_NO_UNICODE_TRANSLATION);
        }
        // The result is an int, on Windows too.
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
        text.remove_prefix(next.length);
    }
    return count;
}

} // namespace

int MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR bytes, int byteCount, LPWSTR wide,
                        int wideCount) {
    if (codePage != CP_UTF8 || bytes == nullptr || byteCount == 0 || byteCount < -1 ||
        wideCount < 0 || (wide == nullptr && wideCount > 0)) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    if ((flags & ~MB_ERR_INVALID_CHARS) != 0) {
        return fail(ERROR_INVALID_FLAGS);
    }
    return convert(textOf(bytes, byteCount), flags == MB_ERR_INVALID_CHARS, wide, wideCount);
}

int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR wide, int wideCount, LPSTR bytes,
                        int byteCount, LPCSTR defaultCharacter, BOOL* defaultUsed) {
    if (codePage != CP_UTF8 || wide == nullptr || wideCount == 0 || wideCount < -1 ||
        byteCount < 0 || (bytes == nullptr && byteCount > 0) || defaultCharacter != nullptr ||
        defaultUsed != nullptr) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    if (flags != 0) {
        return fail(ERROR_INVALID_FLAGS);
    }
    // toUtf8 refuses what Windows replaces.
    std::wstring text(textOf(wide, wideCount));
    std::replace_if(
        text.begin(), text.end(),
        [](wchar_t character) { return !isUnicode(static_cast<char32_t>(character)); }, L'\uFFFD');
    const std::string utf8 = toUtf8(text).value_or(std::string());
    if (byteCount > 0 && utf8.size() > static_cast<std::size_t>(byteCount)) {
        return fail(ERROR_INSUFFICIENT_BUFFER);
    }
    if (byteCount > 0) {
        std::copy(utf8.begin(), utf8.end(), bytes);
    }
    return static_cast<int>(utf8.size());
}
