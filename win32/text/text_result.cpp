#include "text/text_result.h"

#include "last_error.h"
#include "text/utf8.h"

#include <cstring>
#include <cwchar>

namespace ca::win32 {

// Windows' callers tell the two results apart by comparing with the size that they passed.
DWORD returnText(const std::wstring& text, LPWSTR buffer, DWORD size) {
    if (text.size() >= size) {
        return static_cast<DWORD>(text.size() + 1);
    }
    std::wmemcpy(buffer, text.c_str(), text.size() + 1);
    return static_cast<DWORD>(text.size());
}

BOOL returnTextInBytes(const std::string& utf8, LPVOID buffer, LPDWORD size) {
    const std::optional<std::wstring> wide = toWide(utf8);
    if (!wide) {
        return FALSE;
    }
    const auto length = static_cast<DWORD>(wide->size() * sizeof(wchar_t));
    const auto needed = static_cast<DWORD>(length + sizeof(wchar_t));
    if (buffer == nullptr || *size < needed) {
        *size = needed;
        return fail(ERROR_INSUFFICIENT_BUFFER);
    }
    *size = length;
    std::memcpy(buffer, wide->c_str(), needed);
    return TRUE;
}

} // namespace ca::win32
