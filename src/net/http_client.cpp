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
    // -1 asks for a pointer into the text.
    parts.dwHostNameLength = static_cast<DWORD>(-1);
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

bool openSession(DWORD accessType, OpenRequest& open, std::string& error) {
    open.session.reset(
        ::WinHttpOpen(userAgent, accessType, WINHTTP_NO_PROXY_NAME, WINHTTP_NO_PROXY_BYPASS, 0));
    if (!open.session) {
        return fail(error, "winhttp_open_failed");
    }
    // Refused times are no error either: the system's own are longer, and as good.
    static_cast<void>(::WinHttpSetTimeouts(open.session.get(), resolveTimeout, connectTimeout,
                                           sendTimeout, receiveTimeout));
    setOption(open.session.get(), WINHTTP_OPTION_SECURE_PROTOCOLS,
              WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_2);
    return true;
}

// Neither of the two calls touches the network yet.
bool openGet(const RequestTarget& target, OpenRequest& open, std::string& error) {
    open.connection.reset(
        ::WinHttpConnect(open.session.get(), target.host.c_str(), target.port, 0));
    if (!open.connection) {
        return fail(error, "winhttp_connect_failed");
    }
    const DWORD flags = target.secure ? WINHTTP_FLAG_SECURE : 0;
    open.request.reset(::WinHttpOpenRequest(open.connection.get(), L"GET", target.path.c_str(),
                                            nullptr, WINHTTP_NO_REFERER,
                                            WINHTTP_DEFAULT_ACCEPT_TYPES, flags));
    if (!open.request) {
        return fail(error, "winhttp_request_failed");
    }
    // What arrives is judged by signature and digests, so it may come from anywhere, also from
    // plain http behind https.
    setOption(open.request.get(), WINHTTP_OPTION_REDIRECT_POLICY,
              WINHTTP_OPTION_REDIRECT_POLICY_ALWAYS);
    setOption(open.request.get(), WINHTTP_OPTION_DECOMPRESSION,
              WINHTTP_DECOMPRESSION_FLAG_GZIP | WINHTTP_DECOMPRESSION_FLAG_DEFLATE);
    return true;
}

// Sends the request and waits for the headers.
bool exchange(const OpenRequest& open, std::string& error) {
    if (!::WinHttpSendRequest(open.request.get(), WINHTTP_NO_ADDITIONAL_HEADERS, 0,
                              WINHTTP_NO_REQUEST_DATA, 0, 0, 0)) {
        return fail(error, "winhttp_send_failed");
    }
    if (!::WinHttpReceiveResponse(open.request.get(), nullptr)) {
        return fail(error, "winhttp_receive_failed");
    }
    return true;
}

bool judgeStatus(const OpenRequest& open, std::string& error) {
    DWORD status = 0;
    DWORD size = sizeof status;
    const DWORD question = WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER;
    if (!::WinHttpQueryHeaders(open.request.get(), question, WINHTTP_HEADER_NAME_BY_INDEX, &status,
                               &size, WINHTTP_NO_HEADER_INDEX)) {
        return fail(error, "winhttp_status_failed");
    }
    if (status >= 200 && status <= 299) {
        return true;
    }
    error = "http_" + std::to_string(status);
    return false;
}

} // namespace

std::string lastErrorToken(std::string_view token) {
    const DWORD number = ::GetLastError(); // before the string work, which may change it
    return std::string(token) + "_" + std::to_string(number);
}

bool sendGetRequest(const RequestTarget& target, DWORD accessType, OpenRequest& open,
                    std::string& error) {
    return openSession(accessType, open, error) && openGet(target, open, error) &&
           exchange(open, error) && judgeStatus(open, error);
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

    // Whatever the reason was, a broken proxy may stand behind it: one more try goes without. The
    // first attempt is closed before, so that never more than one connection is open.
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
