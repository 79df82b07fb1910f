#include "http/handles.h"
#include "last_error.h"
#include "text/text_result.h"

#include <algorithm>
#include <cstring>

namespace {

using namespace ca::win32;

// A session's or a request's; null with the last error for any other handle.
TransferOptions* optionsOf(HINTERNET handle) {
    auto* object = internetObjectOf<Object>(handle);
    if (auto* session = dynamic_cast<Session*>(object)) {
        return session->options.get();
    }
    auto* request = object == nullptr ? nullptr : internetObjectOf<Request>(handle);
    return request == nullptr ? nullptr : &request->options;
}

bool isSetting(DWORD option) {
    return option == WINHTTP_OPTION_SECURE_PROTOCOLS || option == WINHTTP_OPTION_REDIRECT_POLICY ||
           option == WINHTTP_OPTION_DECOMPRESSION;
}

// False for a value that the option doesn't take; `options` are then spoilt.
bool setOption(TransferOptions& options, DWORD option, DWORD value) {
    switch (option) {
    case WINHTTP_OPTION_SECURE_PROTOCOLS:
        options.onlyTls12 = true;
        return value == WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_2;
    case WINHTTP_OPTION_REDIRECT_POLICY:
        options.redirectPolicy = value;
        return value <= WINHTTP_OPTION_REDIRECT_POLICY_ALWAYS;
    default:
        options.decompression = value;
        return (value & ~WINHTTP_DECOMPRESSION_FLAG_ALL) == 0;
    }
}

} // namespace

BOOL WinHttpSetTimeouts(HINTERNET handle, int resolve, int connect, int send, int receive) {
    TransferOptions* options = optionsOf(handle);
    if (options == nullptr) {
        return FALSE;
    }
    if (std::min({resolve, connect, send, receive}) < -1) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    // Sending has none of its own: a request without a body goes out in one piece.
    options->resolveTimeout = resolve;
    options->connectTimeout = connect;
    options->receiveTimeout = receive;
    return TRUE;
}

BOOL WinHttpSetOption(HINTERNET handle, DWORD option, LPVOID value, DWORD size) {
    TransferOptions* options = optionsOf(handle);
    if (options == nullptr) {
        return FALSE;
    }
    if (!isSetting(option)) {
        return fail(ERROR_WINHTTP_INVALID_OPTION);
    }
    // As on Windows the protocols are the session's, for all of its connections.
    if (option == WINHTTP_OPTION_SECURE_PROTOCOLS && internetObjectOf<Session>(handle) == nullptr) {
        return FALSE;
    }
    DWORD number = 0;
    if (value == nullptr || size != sizeof(number)) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    std::memcpy(&number, value, sizeof(number));
    // A refused value leaves everything as it was.
    TransferOptions changed = *options;
    if (!setOption(changed, option, number)) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    *options = changed;
    return TRUE;
}

BOOL WinHttpQueryOption(HINTERNET handle, DWORD option, LPVOID buffer, LPDWORD size) {
    // Before a response has come, a redirect may still change the URL.
    const auto* opened = requestAt(handle, Request::Stage::received);
    if (opened == nullptr) {
        return FALSE;
    }
    if (option != WINHTTP_OPTION_URL) {
        return fail(ERROR_WINHTTP_INVALID_OPTION);
    }
    if (size == nullptr) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    return returnTextInBytes(opened->transfer->url(), buffer, size);
}
