#include "http/handles.h"
#include "last_error.h"
#include "text/utf8.h"

#include <algorithm>
#include <cstring>
#include <cwchar>

namespace {

using namespace ca::win32;

// The scheme's own, as WinHTTP's INTERNET_DEFAULT_PORT.
constexpr INTERNET_PORT defaultPort = 0;

// Whether WinHTTP leaves a byte of the object's name as it is: all of ASCII but spaces, controls
// and the characters that RFC 2396 calls unwise or delimiters.
bool isSentAsItIs(unsigned char byte) {
    return byte > 0x20 && byte < 0x7F && std::strchr("\"#<>[\\]^`{|}", byte) == nullptr;
}

// What WinHTTP sends for the object's name. An escape that is already there stays, because its
// characters are sent as they are.
std::string escapePath(const std::string& path) {
    constexpr const char* digits = "0123456789ABCDEF";
    std::string escaped = path.starts_with('/') ? "" : "/";
    for (const char character : path) {
        const auto byte = static_cast<unsigned char>(character);
        if (isSentAsItIs(byte)) {
            escaped += character;
        } else {
            escaped += '%';
            escaped += digits[byte >> 4U];
            escaped += digits[byte & 0xFU];
        }
    }
    return escaped;
}

std::string urlOf(const Connection& connection, bool secure, const std::string& path) {
    std::string url = secure ? "https://" : "http://";
    url += connection.host;
    if (connection.port != defaultPort) {
        url += ":" + std::to_string(connection.port);
    }
    return url + escapePath(path);
}

TransferSettings settingsOf(const Request& request) {
    const TransferOptions& options = request.options;
    TransferSettings settings = request.settings;
    // libcurl has one time-out for both. If either has no end, neither has their sum.
    const bool bounded = options.resolveTimeout > 0 && options.connectTimeout > 0;
    settings.connectTimeout = bounded ? long{options.resolveTimeout} + options.connectTimeout : 0;
    settings.receiveTimeout = std::max(options.receiveTimeout, 0);
    settings.redirectPolicy = options.redirectPolicy;
    settings.decompression = options.decompression;
    settings.onlyTls12 = options.onlyTls12;
    return settings;
}

} // namespace

HINTERNET WinHttpOpenRequest(HINTERNET connection, LPCWSTR verb, LPCWSTR path, LPCWSTR version,
                             LPCWSTR referrer, LPCWSTR* acceptTypes, DWORD flags) {
    const auto* opened = internetObjectOf<Connection>(connection);
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
    request->settings.url = urlOf(*opened, (flags & WINHTTP_FLAG_SECURE) != 0, *name);
    request->settings.userAgent = opened->userAgent;
    request->settings.proxyFromEnvironment = opened->proxyFromEnvironment;
    // From here on a change to the session is none to this request.
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
    opened->transfer = std::make_unique<Transfer>(settingsOf(*opened));
    if (!opened->transfer->send()) {
        return fail(opened->transfer->error());
    }
    opened->stage = Request::Stage::sent;
    return TRUE;
}
