#include "http/handles.h"
#include "last_error.h"
#include "text/utf8.h"

#include <algorithm>
#include <cstring>

namespace {

using namespace ca::win32;

// A name, an IPv4 address or an IPv6 address with or without its brackets. Every character that
// would end the host in the URL made of it is refused; libcurl takes care of names beyond ASCII.
bool isHost(const std::string& host) {
    const auto forbidden = [](char character) {
        const auto byte = static_cast<unsigned char>(character);
        return byte <= 0x20 || byte == 0x7F ||
               std::strchr("\"#%/<>?@\\^`{|}", character) != nullptr;
    };
    return !host.empty() && std::none_of(host.begin(), host.end(), forbidden);
}

// A URL needs brackets around an IPv6 address, because its colons would begin a port.
std::string bracketed(const std::string& host) {
    const bool isBareIpv6 = host.find(':') != std::string::npos && !host.starts_with('[');
    return isBareIpv6 ? "[" + host + "]" : host;
}

} // namespace

HINTERNET WinHttpConnect(HINTERNET session, LPCWSTR host, INTERNET_PORT port, DWORD reserved) {
    const auto* opened = internetObjectOf<Session>(session);
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
    // Shared: what is set on the session later still counts for requests that are opened then.
    connection->options = opened->options;
    connection->host = bracketed(*name);
    connection->port = port;
    return handleOf(std::move(connection));
}
