#include "transfer/response_headers.h"

#include "text/ignore_case.h"

#include <charconv>
#include <curl/curl.h>
#include <memory>

namespace ca::win32 {

namespace {

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view whitespace = " \t\r\n";
    const std::size_t first = text.find_first_not_of(whitespace);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(whitespace) - first + 1);
}

} // namespace

void ResponseHeaders::takeLine(std::string_view line) {
    if (line.starts_with("HTTP/")) {
        *this = {};
        text_ = line;
        return;
    }
    text_ += line;
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) {
        return;
    }
    const std::string_view name = line.substr(0, colon);
    const std::string_view value = trimmed(line.substr(colon + 1));
    if (equalIgnoringCase(name, "Content-Length")) {
        contentLength_ = value;
    } else if (equalIgnoringCase(name, "Content-Encoding")) {
        coding_ = codingNamed(value);
    } else if (equalIgnoringCase(name, "Transfer-Encoding")) {
        chunked_ = true;
    } else if (equalIgnoringCase(name, "Location")) {
        location_ = value;
    }
}

void ResponseHeaders::finish(long code) {
    status_ = code;
    text_ += "\r\n";
    // Continue, Processing and Early Hints come before the final response. Any other 1xx is one,
    // without a body.
    finished_ = code != 100 && code != 102 && code != 103;
}

std::optional<std::uint64_t> ResponseHeaders::bodySize() const {
    if (status_ < 200) {
        return 0;
    }
    if (chunked_ || !contentLength_) {
        return std::nullopt;
    }
    // Windows takes a length that is no number for none.
    std::uint64_t size = 0;
    const char* const end = contentLength_->data() + contentLength_->size();
    const auto parsed = std::from_chars(contentLength_->data(), end, size);
    return parsed.ec == std::errc() && parsed.ptr == end ? std::optional(size) : std::nullopt;
}

std::string_view ResponseHeaders::redirect() const {
    switch (status_) {
    case 301:
    case 302:
    case 303:
    case 307:
    case 308:
        return location_;
    default:
        return {};
    }
}

std::string resolveLocation(const std::string& base, std::string_view location) {
    const std::unique_ptr<CURLU, decltype(&::curl_url_cleanup)> url(::curl_url(),
                                                                    &::curl_url_cleanup);
    if (!url) {
        return {};
    }
    const auto set = [&url](CURLUPart part, const char* text, unsigned flags) {
        return ::curl_url_set(url.get(), part, text, flags) == CURLUE_OK;
    };
    // libcurl resolves the second URL against the first. Servers send a Location with spaces and
    // with characters beyond ASCII, which no URL holds.
    const bool resolved = set(CURLUPART_URL, base.c_str(), 0) &&
                          set(CURLUPART_URL, std::string(location).c_str(), CURLU_URLENCODE);
    // A server that redirects chooses no user for the next one.
    if (!resolved || !set(CURLUPART_USER, nullptr, 0) || !set(CURLUPART_PASSWORD, nullptr, 0)) {
        return {};
    }
    char* text = nullptr;
    if (::curl_url_get(url.get(), CURLUPART_URL, &text, 0) != CURLUE_OK) {
        return {};
    }
    std::string address = text;
    ::curl_free(text);
    const bool spoken = address.starts_with("http://") || address.starts_with("https://");
    return spoken ? address : std::string();
}

} // namespace ca::win32
