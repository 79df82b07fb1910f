#include "system/text.h"

#include <algorithm>
#include <windows.h>

namespace ca::system {

bool isUtf8(std::string_view text) {
    const auto isAscii = [](unsigned char byte) { return byte < 0x80; };
    // Most texts are ASCII, and the system's call takes no empty one.
    if (std::all_of(text.begin(), text.end(), isAscii)) {
        return true;
    }
    const int size = static_cast<int>(text.size());
    return ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), size, nullptr, 0) != 0;
}

std::wstring wideFromUtf8(std::string_view text) {
    if (text.empty()) {
        return {};
    }
    const int size = static_cast<int>(text.size());
    // No character takes more units than bytes, so one call is enough.
    std::wstring wide(text.size(), L'\0');
    const int length = ::MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), size);
    wide.resize(static_cast<std::size_t>(length));
    return wide;
}

std::string utf8FromWide(std::wstring_view wide) {
    if (wide.empty()) {
        return {};
    }
    const int length = static_cast<int>(wide.size());
    const auto convert = [&](char* text, int size) {
        return ::WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, text, size, nullptr, nullptr);
    };
    std::string text(static_cast<std::size_t>(convert(nullptr, 0)), '\0');
    convert(text.data(), static_cast<int>(text.size()));
    return text;
}

} // namespace ca::system
