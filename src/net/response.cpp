#include "net/response.h"

#include "system/text.h"

#include <algorithm>

namespace ca::net {

namespace {

// Asks once for the size and once for the text, both in bytes.
template <typename Query>
std::string textFrom(Query query) {
    DWORD size = 0;
    if (query(nullptr, &size) || ::GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
        return {};
    }
    std::wstring text(size / sizeof(wchar_t), L'\0');
    if (!query(text.data(), &size)) {
        return {};
    }
    text.erase(std::min(text.find(L'\0'), text.size())); // the zero that either call may count
    return system::utf8FromWide(text);
}

} // namespace

std::string responseHeaders(const OpenRequest& open) {
    return textFrom([&open](wchar_t* buffer, DWORD* size) {
        return ::WinHttpQueryHeaders(open.request.get(), WINHTTP_QUERY_RAW_HEADERS_CRLF,
                                     WINHTTP_HEADER_NAME_BY_INDEX, buffer, size,
                                     WINHTTP_NO_HEADER_INDEX);
    });
}

std::string finalUrl(const OpenRequest& open) {
    return textFrom([&open](wchar_t* buffer, DWORD* size) {
        return ::WinHttpQueryOption(open.request.get(), WINHTTP_OPTION_URL, buffer, size);
    });
}

} // namespace ca::net
