#include "http/handles.h"
#include "last_error.h"
#include "text/utf8.h"

#include <algorithm>
#include <cstring>

namespace {

using namespace ca::win32;

TransferOptions* optionsOf(HINTERNET handle) {
    auto* object = objectOf<InternetObject>(handle);
    if (auto* session = dynamic_cast<Session*>(object)) {
        return session->options.get();
    }
    auto* request = object == nullptr ? nullptr : objectOf<Request>(handle);
    return request == nullptr ? nullptr : &request->options;
}

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

// A name, an IPv4 address or an IPv6 address with or without its brackets; libcurl takes care
// of names beyond ASCII.
bool isHost(const std::string& host) {
    const auto forbidden = [](char character) {
        const auto byte = static_cast<unsigned char>(character);
        return byte <= 0x20 || byte == 0x7F ||
               std::strchr("\"#%/<>?@\\^`{|}", character) != nullptr;
    };
    return !host.empty() && std::none_of(host.begin(), host.end(), forbidden);
}

} // namespace

HINTERNET WinHttpOpen(LPCWSTR userAgent, DWORD accessType, LPCWSTR proxyName, LPCWSTR proxyBypass,
                      DWORD flags) {
    if (accessType > WINHTTP_ACCESS_TYPE_NO_PROXY || proxyName != nullptr ||
        proxyBypass != nullptr || flags != 0) {
        fail(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const std::optional<std::string> agent = toUtf8(userAgent == nullptr ? L"" : userAgent);
    if (!agent) {
        return nullptr;
    }
    auto session = std::make_unique<Session>();
    session->userAgent = *agent;
    session->proxyFromEnvironment = accessType == WINHTTP_ACCESS_TYPE_DEFAULT_PROXY;
    return handleOf(std::move(session));
}

BOOL WinHttpSetTimeouts(HINTERNET handle, int resolve, int connect, int send, int receive) {
    TransferOptions* options = optionsOf(handle);
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
    TransferOptions* options = optionsOf(handle);
    if (options == nullptr) {
        return FALSE;
    }
    const bool known = option == WINHTTP_OPTION_SECURE_PROTOCOLS ||
                       option == WINHTTP_OPTION_REDIRECT_POLICY ||
                       option == WINHTTP_OPTION_DECOMPRESSION;
    if (!known) {
        return fail(ERROR_WINHTTP_INVALID_OPTION);
    }
    if (option == WINHTTP_OPTION_SECURE_PROTOCOLS && objectOf<Session>(handle) == nullptr) {
        return FALSE;
    }
    DWORD number = 0;
    if (value == nullptr || size != sizeof(number)) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    std::memcpy(&number, value, sizeof(number));
    TransferOptions changed = *options;
    if (!setOption(changed, option, number)) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    *options = changed;
    return TRUE;
}

HINTERNET WinHttpConnect(HINTERNET session, LPCWSTR host, INTERNET_PORT port, DWORD reserved) {
    const auto* opened = objectOf<Session>(session);
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
    connection->userAgent = opened->userAgent;
    connection->proxyFromEnvironment = opened->proxyFromEnvironment;
    connection->options = opened->options;
    const bool bareIpv6 = name->find(':') != std::string::npos && !name->starts_with('[');
    connection->host = bareIpv6 ? "[" + *name + "]" : *name;
    connection->port = port;
    return handleOf(std::move(connection));
}

BOOL WinHttpCloseHandle(HINTERNET handle) {
    if (handle == nullptr) {
        return fail(ERROR_INVALID_HANDLE);
    }
    delete static_cast<InternetObject*>(handle);
    return TRUE;
}
