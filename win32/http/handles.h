// What WinHTTP's handles stand for.
#pragma once

#include "http/transfer.h"

#include <memory>
#include <string>
#include <winhttp.h>

namespace ca::win32 {

// What a session hands down to its requests, and a request may change for itself. Time-outs in
// milliseconds, 0 or -1 for none; those given here are WinHTTP's own.
struct TransferOptions {
    int resolveTimeout = 0;
    int connectTimeout = 60000;
    int receiveTimeout = 30000;
    DWORD redirectPolicy = WINHTTP_OPTION_REDIRECT_POLICY_DISALLOW_HTTPS_TO_HTTP;
    DWORD decompression = 0;
    bool onlyTls12 = false;
};

// What a HINTERNET points at.
class InternetObject {
public:
    InternetObject() = default;
    InternetObject(const InternetObject&) = delete;
    InternetObject& operator=(const InternetObject&) = delete;
    virtual ~InternetObject() = default;
};

class Session : public InternetObject {
public:
    std::string userAgent;
    bool proxyFromEnvironment = true;
    // Shared with the connections, so that the handles may be closed in any order.
    std::shared_ptr<TransferOptions> options = std::make_shared<TransferOptions>();
};

class Connection : public InternetObject {
public:
    std::string userAgent;
    bool proxyFromEnvironment = true;
    std::shared_ptr<const TransferOptions> options;
    std::string host; // an IPv6 address between brackets
    INTERNET_PORT port = 0;
};

class Request : public InternetObject {
public:
    enum class Stage { open, sent, received };
    TransferSettings settings;
    TransferOptions options;
    std::unique_ptr<Transfer> transfer;
    Stage stage = Stage::open;
};

// The object behind a handle; null with the last error if it is another kind's.
template <class Kind>
Kind* objectOf(HINTERNET handle) {
    if (handle == nullptr) {
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    auto* found = dynamic_cast<Kind*>(static_cast<InternetObject*>(handle));
    if (found == nullptr) {
        SetLastError(ERROR_WINHTTP_INCORRECT_HANDLE_TYPE);
    }
    return found;
}

// The request behind a handle; null with the last error also if it has come less far or further.
Request* requestAt(HINTERNET handle, Request::Stage stage);

template <class Kind>
HINTERNET handleOf(std::unique_ptr<Kind> object) {
    return static_cast<InternetObject*>(object.release());
}

} // namespace ca::win32
