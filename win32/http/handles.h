// What WinHTTP's handles stand for.
#pragma once

#include "handle.h"
#include "transfer/transfer.h"

#include <memory>
#include <string>
#include <winhttp.h>

namespace ca::win32 {

// What a session hands down to its requests, and a request may change for itself. Time-outs in
// milliseconds, 0 or -1 for none; the values here are WinHTTP's own defaults.
struct TransferOptions {
    int resolveTimeout = 0;
    int connectTimeout = 60000;
    int receiveTimeout = 30000;
    DWORD redirectPolicy = WINHTTP_OPTION_REDIRECT_POLICY_DISALLOW_HTTPS_TO_HTTP;
    DWORD decompression = 0;
    bool onlyTls12 = false;
};

struct Session : Object {
    std::string userAgent;
    bool proxyFromEnvironment = true;
    // Shared with the connections, so that the handles may be closed in any order.
    std::shared_ptr<TransferOptions> options = std::make_shared<TransferOptions>();
};

struct Connection : Object {
    std::string userAgent;
    bool proxyFromEnvironment = true;
    std::shared_ptr<const TransferOptions> options;
    std::string host; // an IPv6 address between brackets
    INTERNET_PORT port = 0;
};

// One GET, which its calls take from stage to stage.
struct Request : Object {
    enum class Stage { open, sent, received };
    TransferSettings settings;
    TransferOptions options;
    std::unique_ptr<Transfer> transfer;
    Stage stage = Stage::open;
};

// The object behind a handle; null with the last error if it is another kind's.
template <class Kind>
Kind* internetObjectOf(HINTERNET handle) {
    return objectOf<Kind>(handle, ERROR_WINHTTP_INCORRECT_HANDLE_TYPE);
}

// The request behind a handle; null with the last error also if it has come less far or further.
Request* requestAt(HINTERNET handle, Request::Stage stage);

} // namespace ca::win32
