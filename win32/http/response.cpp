#include "http/handles.h"
#include "last_error.h"
#include "text/utf8.h"

#include <algorithm>
#include <cstring>

namespace {

using namespace ca::win32;

BOOL giveText(const std::string& text, LPVOID buffer, LPDWORD size) {
    const std::optional<std::wstring> wide = toWide(text);
    if (!wide) {
        return FALSE;
    }
    const auto length = static_cast<DWORD>(wide->size() * sizeof(wchar_t));
    const bool fits = buffer != nullptr && *size >= length + sizeof(wchar_t);
    *size = fits ? length : static_cast<DWORD>(length + sizeof(wchar_t));
    if (!fits) {
        return fail(ERROR_INSUFFICIENT_BUFFER);
    }
    std::memcpy(buffer, wide->c_str(), length + sizeof(wchar_t));
    return TRUE;
}

} // namespace

BOOL WinHttpQueryHeaders(HINTERNET request, DWORD info, LPCWSTR name, LPVOID buffer, LPDWORD size,
                         LPDWORD index) {
    const auto* opened = requestAt(request, Request::Stage::received);
    if (opened == nullptr) {
        return FALSE;
    }
    if (name != nullptr || size == nullptr || index != nullptr) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    if (info == (WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER)) {
        const auto status = static_cast<DWORD>(opened->transfer->response().status());
        const bool fits = buffer != nullptr && *size >= sizeof(status);
        *size = sizeof(status);
        if (!fits) {
            return fail(ERROR_INSUFFICIENT_BUFFER);
        }
        std::memcpy(buffer, &status, sizeof(status));
        return TRUE;
    }
    if (info == WINHTTP_QUERY_RAW_HEADERS_CRLF) {
        return giveText(opened->transfer->response().text(), buffer, size);
    }
    if (info != WINHTTP_QUERY_CONTENT_LENGTH) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    const std::optional<std::string>& length = opened->transfer->response().contentLength();
    return length ? giveText(*length, buffer, size) : fail(ERROR_WINHTTP_HEADER_NOT_FOUND);
}

BOOL WinHttpQueryOption(HINTERNET handle, DWORD option, LPVOID buffer, LPDWORD size) {
    const auto* opened = requestAt(handle, Request::Stage::received);
    if (opened == nullptr) {
        return FALSE;
    }
    if (option != WINHTTP_OPTION_URL) {
        return fail(ERROR_WINHTTP_INVALID_OPTION);
    }
    return size == nullptr ? fail(ERROR_INVALID_PARAMETER)
                           : giveText(opened->transfer->url(), buffer, size);
}

BOOL WinHttpQueryDataAvailable(HINTERNET request, LPDWORD available) {
    auto* opened = requestAt(request, Request::Stage::received);
    if (opened == nullptr) {
        return FALSE;
    }
    std::span<const char> bytes;
    if (!opened->transfer->available(bytes)) {
        return fail(opened->transfer->error());
    }
    if (available != nullptr) {
        *available = static_cast<DWORD>(bytes.size());
    }
    return TRUE;
}

BOOL WinHttpReadData(HINTERNET request, LPVOID buffer, DWORD size, LPDWORD read) {
    auto* opened = requestAt(request, Request::Stage::received);
    if (opened == nullptr) {
        return FALSE;
    }
    if (buffer == nullptr || read == nullptr) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    *read = 0;
    std::span<const char> bytes;
    if (!opened->transfer->available(bytes)) {
        return fail(opened->transfer->error());
    }
    const std::size_t count = std::min<std::size_t>(bytes.size(), size);
    if (count > 0) {
        std::memcpy(buffer, bytes.data(), count);
    }
    opened->transfer->consume(count);
    *read = static_cast<DWORD>(count);
    return TRUE;
}
