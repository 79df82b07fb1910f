#include "http/handles.h"
#include "last_error.h"
#include "text/utf8.h"

#include <algorithm>
#include <cstring>
#include <cwchar>

namespace {

using namespace ca::win32;

constexpr INTERNET_PORT defaultPort = 0; // the scheme's own, as WinHTTP's INTERNET_DEFAULT_PORT

// What WinHTTP sends for the object's name: characters that RFC 2396 calls unwise, blanks,
// controls and everything beyond ASCII as %XX, and the rest, an escape that is already there
// included, as it stands.
std::string escapePath(const std::string& path) {
    constexpr const char* hex = "0123456789ABCDEF";
    std::string escaped = path.starts_with('/') ? "" : "/";
    for (const char character : path) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte > 0x20 && byte < 0x7F && std::strchr("\"#<>[\\]^`{|}", character) == nullptr) {
            escaped += character;
        } else {
            escaped += '%';
            escaped += hex[byte >> 4U];
            escaped += hex[byte & 0xFU];
        }
    }
    return escaped;
}

} // namespace

Request* ca::win32::requestAt(HINTERNET handle, Request::Stage stage) {
    auto* request = objectOf<Request>(handle);
    if (request != nullptr && request->stage != stage) {
        fail(ERROR_WINHTTP_INCORRECT_HANDLE_STATE);
        return nullptr;
    }
    return request;
}

HINTERNET WinHttpOpenRequest(HINTERNET connection, LPCWSTR verb, LPCWSTR path, LPCWSTR version,
                             LPCWSTR referrer, LPCWSTR* acceptTypes, DWORD flags) {
    const auto* opened = objectOf<Connection>(connection);
    if (opened == nullptr) {
        return nullptr;
    }
    if ((verb != nullptr && std::wcscmp(verb, L"GET") != 0) || version != nullptr ||
        referrer != nullptr || acceptTypes != nullptr || (flags & ~WINHTTP_FLAG_SECURE) != 0) {
        fail(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const std::optional<std::string> name = toUtf8(path == nullptr ? L"" : path);
    if (!name) {
        return nullptr;
    }
    auto request = std::make_unique<Request>();
    request->settings.url = (flags & WINHTTP_FLAG_SECURE) != 0 ? "https://" : "http://";
    request->settings.url += opened->host;
    request->settings.url += opened->port == defaultPort ? "" : ":" + std::to_string(opened->port);
    request->settings.url += escapePath(*name);
    request->settings.userAgent = opened->userAgent;
    request->settings.proxyFromEnvironment = opened->proxyFromEnvironment;
    request->options = *opened->options;
    return handleOf(std::move(request));
}

BOOL WinHttpSendRequest(HINTERNET request, LPCWSTR headers, DWORD headersLength, LPVOID optional,
                        DWORD optionalLength, DWORD totalLength, DWORD_PTR) {
    auto* opened = requestAt(request, Request::Stage::open);
    if (opened == nullptr) {
        return FALSE;
    }
    if (headers != nullptr || headersLength != 0 || optional != nullptr || optionalLength != 0 ||
        totalLength != 0) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    const TransferOptions& options = opened->options;
    TransferSettings settings = opened->settings;
    const bool bounded = options.resolveTimeout > 0 && options.connectTimeout > 0;
    settings.connectTimeout = bounded ? long{options.resolveTimeout} + options.connectTimeout : 0;
    settings.receiveTimeout = std::max(options.receiveTimeout, 0);
    settings.redirectPolicy = options.redirectPolicy;
    settings.decompression = options.decompression;
    settings.onlyTls12 = options.onlyTls12;
    opened->transfer = std::make_unique<Transfer>(std::move(settings));
    if (!opened->transfer->send()) {
        return fail(opened->transfer->error());
    }
    opened->stage = Request::Stage::sent;
    return TRUE;
}

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
