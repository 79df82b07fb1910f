#include "http/handles.h"
#include "last_error.h"
#include "text/text_result.h"

#include <cstring>

namespace {

using namespace ca::win32;

BOOL returnNumber(DWORD number, LPVOID buffer, LPDWORD size) {
    const bool fits = buffer != nullptr && *size >= sizeof(number);
    // Set in either case: a caller without a buffer asks for the size.
    *size = sizeof(number);
    if (!fits) {
        return fail(ERROR_INSUFFICIENT_BUFFER);
    }
    std::memcpy(buffer, &number, sizeof(number));
    return TRUE;
}

} // namespace

BOOL WinHttpReceiveResponse(HINTERNET request, LPVOID reserved) {
    auto* opened = requestAt(request, Request::Stage::sent);
    if (opened == nullptr) {
        return FALSE;
    }
    if (reserved != nullptr) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    if (!opened->transfer->receive()) {
        return fail(opened->transfer->error());
    }
    opened->stage = Request::Stage::received;
    return TRUE;
}

BOOL WinHttpQueryHeaders(HINTERNET request, DWORD info, LPCWSTR name, LPVOID buffer, LPDWORD size,
                         LPDWORD index) {
    const auto* opened = requestAt(request, Request::Stage::received);
    if (opened == nullptr) {
        return FALSE;
    }
    if (name != nullptr || size == nullptr || index != nullptr) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    const ResponseHeaders& headers = opened->transfer->response();
    switch (info) {
    case WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER:
        return returnNumber(static_cast<DWORD>(headers.status()), buffer, size);
    case WINHTTP_QUERY_RAW_HEADERS_CRLF:
        return returnTextInBytes(headers.text(), buffer, size);
    case WINHTTP_QUERY_CONTENT_LENGTH:
        return headers.contentLength() ? returnTextInBytes(*headers.contentLength(), buffer, size)
                                       : fail(ERROR_WINHTTP_HEADER_NOT_FOUND);
    default:
        return fail(ERROR_INVALID_PARAMETER);
    }
}
