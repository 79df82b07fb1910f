#include "net/http_client.h"

#include "system/text.h"

namespace ca::net {

namespace {

constexpr wchar_t userAgent[] = L"ColdAnchorLauncher/1.0.3";

// Milliseconds. Long enough for a slow line, short enough that a dead server doesn't
// keep the player waiting.
constexpr int resolveTimeout = 5000;
constexpr int connectTimeout = 5000;
constexpr int sendTimeout = 15000;
constexpr int receiveTimeout = 15000;

// A refused option isn't an error: an older Windows then works with its own defaults.
void setOption(HINTERNET handle, DWORD option, DWORD value) {
    static_cast<void>(::WinHttpSetOption(handle, option, &value, sizeof value));
}

bool crackUrl(std::string_view url, RequestTarget& target) {
    const std::wstring wide = system::wideFromUtf8(url);
    URL_COMPONENTS parts{};
    parts.dwStructSize = sizeof parts;
    parts.dwHostNameLength = static_cast<DWORD>(-1); // -1 asks for a pointer into the text
    parts.dwUrlPathLength = static_cast<DWORD>(-1);
    parts.dwExtraInfoLength = static_cast<DWORD>(-1);
    if (!::WinHttpCrackUrl(wide.c_str(), 0, 0, &parts)) {
        return false;
    }
    target.host.assign(parts.lpszHostName, parts.dwHostNameLength);
    target.path.assign(parts.lpszUrlPath, parts.dwUrlPathLength);
    target.path.append(parts.lpszExtraInfo, parts.dwExtraInfoLength);
    if (target.path.empty()) {
        target.path = L"/";
    }
    target.port = parts.nPort;
    target.secure = parts.nScheme == INTERNET_SCHEME_HTTPS;
    return true;
}

bool fail(std::string& error, std::string_view token) {
    error = lastErrorToken(token);
    return false;
}

} // namespace

std::string lastErrorToken(std::string_view token) {
    const DWORD number = ::GetLastError(); // before the string work, which may change it
    return std::string(token) + "_" + std::to_string(number);
}

bool sendGetRequest(const RequestTarget& target, DWORD accessType, OpenRequest& open,
                    std::string& error) {
    open.session.reset(
        ::WinHttpOpen(userAgent, accessType, WINHTTP_NO_PROXY_NAME, WINHTTP_NO_PROXY_BYPASS, 0));
    if (!open.session) {
        return fail(error, "winhttp_open_failed");
    }
    static_cast<void>(::WinHttpSetTimeouts(open.session.get(), resolveTimeout, connectTimeout,
                                           sendTimeout, receiveTimeout));
    setOption(open.session.get(), WINHTTP_OPTION_SECURE_PROTOCOLS,
              WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_2);

    open.connection.reset(
        ::WinHttpConnect(open.session.get(), target.host.c_str(), target.port, 0));
    if (!open.connection) {
        return fail(error, "winhttp_connect_failed");
    }

    open.request.reset(::WinHttpOpenRequest(
        open.connection.get(), L"GET", target.path.c_str(), nullptr, WINHTTP_NO_REFERER,
        WINHTTP_DEFAULT_ACCEPT_TYPES, target.secure ? WINHTTP_FLAG_SECURE : 0));
    if (!open.request) {
        return fail(error, "winhttp_request_failed");
    }
    setOption(open.request.get(), WINHTTP_OPTION_REDIRECT_POLICY,
              WINHTTP_OPTION_REDIRECT_POLICY_ALWAYS);
    setOption(open.request.get(), WINHTTP_OPTION_DECOMPRESSION,
              WINHTTP_DECOMPRESSION_FLAG_GZIP | WINHTTP_DECOMPRESSION_FLAG_DEFLATE);

    if (!::WinHttpSendRequest(open.request.get(), WINHTTP_NO_ADDITIONAL_HEADERS, 0,
                              WINHTTP_NO_REQUEST_DATA, 0, 0, 0)) {
        return fail(error, "winhttp_send_failed");
    }
    if (!::WinHttpReceiveResponse(open.request.get(), nullptr)) {
        return fail(error, "winhttp_receive_failed");
    }

    DWORD status = 0;
    DWORD size = sizeof status;
    if (!::WinHttpQueryHeaders(
            open.request.get(), WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER,
            WINHTTP_HEADER_NAME_BY_INDEX, &status, &size, WINHTTP_NO_HEADER_INDEX)) {
        return fail(error, "winhttp_status_failed");
    }
    if (status >= 200 && status <= 299) {
        return true;
    }
    error = "http_" + std::to_string(status);
    return false;
}

bool openRequest(std::string_view url, OpenRequest& open, std::string& error) {
    RequestTarget target;
    if (!crackUrl(url, target)) {
        error = "invalid_update_url";
        return false;
    }
    if (sendGetRequest(target, WINHTTP_ACCESS_TYPE_DEFAULT_PROXY, open, error)) {
        return true;
    }

    std::string first = std::move(error);
    open.request.reset();
    open.connection.reset();
    open.session.reset();
    if (sendGetRequest(target, WINHTTP_ACCESS_TYPE_NO_PROXY, open, error)) {
        return true;
    }
    error = std::move(first) + " // direct:" + error;
    return false;
}

} // namespace ca::net
