// Texts that a call returns, in a buffer of its caller's. Two conventions, as Windows has them.
#pragma once

#include <string>
#include <windows.h>

namespace ca::win32 {

// Sizes in characters: the length without the zero if the text fits with its zero, else the size
// that it needs with the zero, and the buffer is left alone.
DWORD returnText(const std::wstring& text, LPWSTR buffer, DWORD size);

// Sizes in bytes, for the UTF-8 that a request received: `*size` becomes the length without the
// zero; if the buffer is null or too small, the size needed with the zero and FALSE with
// ERROR_INSUFFICIENT_BUFFER. A text that isn't UTF-8 fails as toWide does.
BOOL returnTextInBytes(const std::string& utf8, LPVOID buffer, LPDWORD size);

} // namespace ca::win32
