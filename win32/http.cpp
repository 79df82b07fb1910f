#include "host.h"
#include "transfer.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <memory>
#include <new>
#include <winhttp.h>

namespace {

using namespace ca::win32;

constexpr INTERNET_PORT defaultPort = 0; // the scheme's own, as WinHTTP's INTERNET_DEFAULT_PORT

// What a session hands down to its requests, and a request may change for itself.
struct Options {
    int resolveTimeout = 0;
    int connectTimeout = 60000;
    int receiveTimeout = 30000;
    DWORD redirectPolicy = WINHTTP_OPTION_REDIRECT_POLICY_DISALLOW_HTTPS_TO_HTTP;
    DWORD decompression = 0;
    bool onlyTls12 = false;
};

struct Handle {
    virtual ~Handle() = default;
};

struct Session : Handle {
    std::string userAgent;
    bool proxyFromEnvironment = true;
    Options options;
};

// Connections and requests share what a session holds, so that the handles may be closed in any order.
struct Connection : Handle {
    std::shared_ptr<const Session> session;
    std::string host;
    INTERNET_PORT port = defaultPort;
};

struct Request : Handle {
    enum class Stage { open, sent, received };
    TransferSettings settings;
    Options options;
    std::unique_ptr<Transfer> transfer;
    Stage stage = Stage::open;
};

struct SessionHandle : Handle {
    std::shared_ptr<Session> session = std::make_shared<Session>();
};

template <class Kind>
Kind* kindOf(HINTERNET handle) {
    if (handle == nullptr) {
        fail(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    auto* found = dynamic_cast<Kind*>(static_cast<Handle*>(handle));
    if (found == nullptr) {
        fail(ERROR_WINHTTP_INCORRECT_HANDLE_TYPE);
    }
    return found;
}

Request* requestAt(HINTERNET handle, Request::Stage stage) {
    auto* request = kindOf<Request>(handle);
    if (request != nullptr && request->stage != stage) {
        fail(ERROR_WINHTTP_INCORRECT_HANDLE_STATE);
        return nullptr;
    }
    return request;
}

Options* optionsOf(HINTERNET handle) {
    if (handle == nullptr) {
        fail(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    auto* base = static_cast<Handle*>(handle);
    if (auto* session = dynamic_cast<SessionHandle*>(base)) {
        return &session->session->options;
    }
    if (auto* request = dynamic_cast<Request*>(base)) {
        return &request->options;
    }
    fail(ERROR_WINHTTP_INCORRECT_HANDLE_TYPE);
    return nullptr;
}

template <class Kind>
HINTERNET handleOf(std::unique_ptr<Kind> object) {
    return static_cast<Handle*>(object.release());
}

// A name, an IPv4 address or an IPv6 address with or without its brackets; libcurl takes care of names beyond ASCII.
bool isHost(const std::string& host) {
    const auto forbidden = [](char character) {
        const auto byte = static_cast<unsigned char>(character);
        return byte <= 0x20 || byte == 0x7F || std::strchr("\"#%/<>?@\\^`{|}", character) != nullptr;
    };
    return !host.empty() && std::none_of(host.begin(), host.end(), forbidden);
}

// What WinHTTP sends for the object's name: characters that RFC 2396 calls unwise, blanks, controls and everything
// beyond ASCII as %XX, and the rest, an escape that is already there included, as it stands.
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

bool setOption(Options& options, DWORD option, DWORD value) {
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

HINTERNET WinHttpOpen(LPCWSTR userAgent, DWORD accessType, LPCWSTR proxyName, LPCWSTR proxyBypass, DWORD flags) {
    if (accessType > WINHTTP_ACCESS_TYPE_NO_PROXY || proxyName != nullptr || proxyBypass != nullptr || flags != 0) {
        fail(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const std::optional<std::string> agent = toUtf8(userAgent == nullptr ? L"" : userAgent);
    if (!agent) {
        return nullptr;
    }
    auto handle = std::make_unique<SessionHandle>();
    handle->session->userAgent = *agent;
    handle->session->proxyFromEnvironment = accessType == WINHTTP_ACCESS_TYPE_DEFAULT_PROXY;
    return handleOf(std::move(handle));
}

BOOL WinHttpSetTimeouts(HINTERNET handle, int resolve, int connect, int send, int receive) {
    Options* options = optionsOf(handle);
    if (options == nullptr) {
        return FALSE;
    }
    if (std::min({resolve, connect, send, receive}) < -1) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    options->resolveTimeout = resolve;
    options->connectTimeout = connect;
    options->receiveTimeout = receive;
    return TRUE;
}

BOOL WinHttpSetOption(HINTERNET handle, DWORD option, LPVOID value, DWORD size) {
    Options* options = optionsOf(handle);
    if (options == nullptr) {
        return FALSE;
    }
    const bool known = option == WINHTTP_OPTION_SECURE_PROTOCOLS || option == WINHTTP_OPTION_REDIRECT_POLICY ||
                       option == WINHTTP_OPTION_DECOMPRESSION;
    if (!known) {
        return fail(ERROR_WINHTTP_INVALID_OPTION);
    }
    if (option == WINHTTP_OPTION_SECURE_PROTOCOLS && kindOf<SessionHandle>(handle) == nullptr) {
        return FALSE;
    }
    DWORD number = 0;
    if (value == nullptr || size != sizeof(number)) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    std::memcpy(&number, value, sizeof(number));
    Options changed = *options;
    if (!setOption(changed, option, number)) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    *options = changed;
    return TRUE;
}

HINTERNET WinHttpConnect(HINTERNET session, LPCWSTR host, INTERNET_PORT port, DWORD reserved) {
    const auto* opened = kindOf<SessionHandle>(session);
    if (opened == nullptr) {
        return nullptr;
    }
    if (host == nullptr || reserved != 0) {
        fail(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const std::optional<std::string> name = toUtf8(host);
    if (!name || !isHost(*name)) {
        fail(ERROR_WINHTTP_INVALID_URL);
        return nullptr;
    }
    auto connection = std::make_unique<Connection>();
    connection->session = opened->session;
    const bool bareIpv6 = name->find(':') != std::string::npos && !name->starts_with('[');
    connection->host = bareIpv6 ? "[" + *name + "]" : *name;
    connection->port = port;
    return handleOf(std::move(connection));
}

HINTERNET WinHttpOpenRequest(HINTERNET connection, LPCWSTR verb, LPCWSTR path, LPCWSTR version, LPCWSTR referrer,
                             LPCWSTR* acceptTypes, DWORD flags) {
    const auto* opened = kindOf<Connection>(connection);
    if (opened == nullptr) {
        return nullptr;
    }
    if ((verb != nullptr && std::wcscmp(verb, L"GET") != 0) || version != nullptr || referrer != nullptr ||
        acceptTypes != nullptr || (flags & ~WINHTTP_FLAG_SECURE) != 0) {
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
    request->settings.userAgent = opened->session->userAgent;
    request->settings.proxyFromEnvironment = opened->session->proxyFromEnvironment;
    request->options = opened->session->options;
    return handleOf(std::move(request));
}

BOOL WinHttpSendRequest(HINTERNET request, LPCWSTR headers, DWORD headersLength, LPVOID optional, DWORD optionalLength,
                        DWORD totalLength, DWORD_PTR) {
    auto* opened = requestAt(request, Request::Stage::open);
    if (opened == nullptr) {
        return FALSE;
    }
    if (headers != nullptr || headersLength != 0 || optional != nullptr || optionalLength != 0 || totalLength != 0) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    const Options& options = opened->options;
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

BOOL WinHttpQueryHeaders(HINTERNET request, DWORD info, LPCWSTR name, LPVOID buffer, LPDWORD size, LPDWORD index) {
    const auto* opened = requestAt(request, Request::Stage::received);
    if (opened == nullptr) {
        return FALSE;
    }
    if (name != nullptr || size == nullptr || index != nullptr) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    if (info == (WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER)) {
        const auto status = static_cast<DWORD>(opened->transfer->status());
        const bool fits = buffer != nullptr && *size >= sizeof(status);
        *size = sizeof(status);
        if (!fits) {
            return fail(ERROR_INSUFFICIENT_BUFFER);
        }
        std::memcpy(buffer, &status, sizeof(status));
        return TRUE;
    }
    if (info != WINHTTP_QUERY_CONTENT_LENGTH) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    const std::optional<std::string>& length = opened->transfer->contentLength();
    return length ? giveText(*length, buffer, size) : fail(ERROR_WINHTTP_HEADER_NOT_FOUND);
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

BOOL WinHttpCloseHandle(HINTERNET handle) {
    if (handle == nullptr) {
        return fail(ERROR_INVALID_HANDLE);
    }
    delete static_cast<Handle*>(handle);
    return TRUE;
}
