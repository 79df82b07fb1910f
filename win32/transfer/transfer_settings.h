// What a request was told before it was sent.
#pragma once

#include <string>
#include <windows.h>

namespace ca::win32 {

// Time-outs in milliseconds, 0 for none.
struct TransferSettings {
    std::string url; // http or https, in printable ASCII except for the host
    std::string userAgent;
    long connectTimeout = 0; // resolving, connecting and the TLS handshake together
    long receiveTimeout = 0; // without one byte
    DWORD redirectPolicy = 0;
    DWORD decompression = 0;
    bool proxyFromEnvironment = true;
    bool onlyTls12 = false;
};

} // namespace ca::win32
