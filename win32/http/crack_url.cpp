#include "last_error.h"
#include "text/ignore_case.h"

#include <algorithm>
#include <string_view>
#include <winhttp.h>

namespace {

using namespace ca::win32;

constexpr INTERNET_PORT httpPort = 80;
constexpr INTERNET_PORT httpsPort = 443;

// Each part points into the URL. `extra` is the query with its "?", or the fragment with its "#".
struct Parts {
    std::wstring_view scheme;
    std::wstring_view user;
    std::wstring_view password;
    std::wstring_view host;
    std::wstring_view path;
    std::wstring_view extra;
    INTERNET_SCHEME number = 0;
    INTERNET_PORT port = 0;
};

// The part of `text` before the first of the characters in `ends`. `text` then begins with that
// character or is empty.
std::wstring_view takeUpTo(std::wstring_view& text, std::wstring_view ends) {
    const std::wstring_view taken = text.substr(0, text.find_first_of(ends));
    text.remove_prefix(taken.size());
    return taken;
}

// "" and ":" leave the scheme's own port; anything but a number up to 65535 is refused.
bool readPort(std::wstring_view text, INTERNET_PORT& port) {
    if (text.size() <= 1) {
        return text.empty() || text == L":";
    }
    unsigned value = 0;
    for (const wchar_t character : text.substr(1)) {
        if (character < L'0' || character > L'9') {
            return false;
        }
        value = value * 10 + static_cast<unsigned>(character - L'0');
        if (value > 0xFFFF) {
            return false;
        }
    }
    port = static_cast<INTERNET_PORT>(value);
    return text.front() == L':';
}

// Cuts the user and the password, which nothing but the "@" behind them tells from a host, off the
// front of `authority`.
void takeUser(std::wstring_view& authority, Parts& parts) {
    const std::size_t at = authority.find(L'@');
    if (at == std::wstring_view::npos) {
        return;
    }
    std::wstring_view user = authority.substr(0, at);
    parts.user = takeUpTo(user, L":");
    parts.password = user.empty() ? user : user.substr(1);
    authority.remove_prefix(at + 1);
}

bool readAuthority(std::wstring_view authority, Parts& parts) {
    takeUser(authority, parts);
    std::size_t hostEnd = authority.find(L':');
    // The colons of an IPv6 address don't begin a port.
    if (authority.starts_with(L'[')) {
        const std::size_t bracket = authority.find(L']');
        if (bracket == std::wstring_view::npos || bracket == 1) {
            return false;
        }
        hostEnd = bracket + 1;
    }
    parts.host = authority.substr(0, hostEnd);
    authority.remove_prefix(parts.host.size());
    return !parts.host.empty() && readPort(authority, parts.port);
}

bool readScheme(std::wstring_view scheme, Parts& parts) {
    parts.scheme = scheme;
    if (equalIgnoringCase(scheme, L"http")) {
        parts.number = INTERNET_SCHEME_HTTP;
        parts.port = httpPort;
        return true;
    }
    if (equalIgnoringCase(scheme, L"https")) {
        parts.number = INTERNET_SCHEME_HTTPS;
        parts.port = httpsPort;
        return true;
    }
    return false;
}

DWORD crack(std::wstring_view url, Parts& parts) {
    const std::size_t colon = url.find(L':');
    if (colon == std::wstring_view::npos || !readScheme(url.substr(0, colon), parts)) {
        return ERROR_WINHTTP_UNRECOGNIZED_SCHEME;
    }
    url.remove_prefix(colon + 1);
    // A scheme without "//" has no host to connect to.
    if (!url.starts_with(L"//")) {
        return ERROR_WINHTTP_INVALID_URL;
    }
    url.remove_prefix(2);
    if (!readAuthority(takeUpTo(url, L"/?#"), parts)) {
        return ERROR_WINHTTP_INVALID_URL;
    }
    parts.path = takeUpTo(url, L"?#");
    parts.extra = url;
    return ERROR_SUCCESS;
}

// A part that nobody asked for has a length of 0.
void setPart(std::wstring_view part, LPWSTR& pointer, DWORD& length) {
    if (length != 0) {
        // The SDK's type for a pointer into the caller's own text.
        pointer = const_cast<LPWSTR>(part.data());
        length = static_cast<DWORD>(part.size());
    }
}

bool asksForPointersOnly(const URL_COMPONENTS& parts) {
    return parts.lpszScheme == nullptr && parts.lpszHostName == nullptr &&
           parts.lpszUserName == nullptr && parts.lpszPassword == nullptr &&
           parts.lpszUrlPath == nullptr && parts.lpszExtraInfo == nullptr;
}

} // namespace

BOOL WinHttpCrackUrl(LPCWSTR url, DWORD length, DWORD flags, LPURL_COMPONENTS parts) {
    if (url == nullptr || parts == nullptr || parts->dwStructSize != sizeof(*parts) || flags != 0 ||
        !asksForPointersOnly(*parts)) {
        return fail(ERROR_INVALID_PARAMETER);
    }
    const std::wstring_view text =
        length == 0 ? std::wstring_view(url) : std::wstring_view(url, length);
    Parts found;
    const DWORD error = crack(text, found);
    if (error != ERROR_SUCCESS) {
        return fail(error);
    }
    if (parts->dwExtraInfoLength == 0) {
        // Nobody asked for the query alone, so it stays with the path.
        found.path = text.substr(text.size() - found.path.size() - found.extra.size());
    }
    setPart(found.scheme, parts->lpszScheme, parts->dwSchemeLength);
    setPart(found.user, parts->lpszUserName, parts->dwUserNameLength);
    setPart(found.password, parts->lpszPassword, parts->dwPasswordLength);
    setPart(found.host, parts->lpszHostName, parts->dwHostNameLength);
    setPart(found.path, parts->lpszUrlPath, parts->dwUrlPathLength);
    setPart(found.extra, parts->lpszExtraInfo, parts->dwExtraInfoLength);
    parts->nScheme = found.number;
    parts->nPort = found.port;
    return TRUE;
}
