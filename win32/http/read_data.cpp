#include "http/handles.h"
#include "last_error.h"

#include <algorithm>
#include <cstring>

using namespace ca::win32;

BOOL WinHttpQueryDataAvailable(HINTERNET request, LPDWORD available) {
    auto* opened = requestAt(request, Request::Stage::received);
    if (opened == nullptr) {
        return FALSE;
    }
    std::span<const char> bytes;
    if (!opened->transfer->available(bytes)) {
        return fail(opened->transfer->error());
    }
    // A caller may only wait for the bytes, and learn their number from the read.
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
    // Bytes that the buffer has no room for stay for the next call.
    const std::size_t count = std::min<std::size_t>(bytes.size(), size);
    if (count > 0) {
        std::memcpy(buffer, bytes.data(), count);
    }
    opened->transfer->consume(count);
    *read = static_cast<DWORD>(count);
    return TRUE;
}
