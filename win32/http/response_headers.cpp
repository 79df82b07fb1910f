#include "http/response_headers.h"

#include <charconv>
#include <curl/curl.h>
#include <memory>
#include <strings.h>

namespace ca::win32 {

namespace {

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(blanks);
    return first == std::string_view::npos
               ? std::string_view()
               : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

bool isNamed(std::string_view text, std::string_view name) {
    return text.size() == name.size() && ::strncasecmp(text.data(), name.data(), name.size()) == 0;
}

} // namespace

void ResponseHead::takeLine(std::string_view line) {
    if (line.starts_with("HTTP/")) {
        *this = {};
        lines = line;
        return;
    }
    lines += line;
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) {
        return;
    }
    const std::string_view name = line.substr(0, colon);
    const std::string_view value = trimmed(line.substr(colon + 1));
    if (isNamed(name, "Content-Length")) {
        lengthText = value;
    } else if (isNamed(name, "Content-Encoding")) {
        contentCoding = codingNamed(value);
    } else if (isNamed(name, "Transfer-Encoding")) {
        chunked = true;
    } else if (isNamed(name, "Location")) {
        location = value;
    }
}

void ResponseHead::finish(long code) {
    statusCode = code;
    lines += "\r\n";
    // Continue, Processing and Early Hints come before the answer proper. Any other 1xx
    // is one, without a body.
    finished = code != 100 && code != 102 && code != 103;
}

std::optional<std::uint64_t> ResponseHead::bodySize() const {
    if (statusCode < 200) {
        return 0;
    }
    if (chunked || !lengthText) {
        return std::nullopt;
    }
    std::uint64_t size = 0;
    const char* const end = lengthText->data() + lengthText->size();
    const auto parsed = std::from_chars(lengthText->data(), end, size);
    return parsed.ec == std::errc() && parsed.ptr == end ? std::optional(size) : std::nullopt;
}

std::string_view ResponseHead::redirect() const {
    switch (statusCode) {
    case 301:
    case 302:
    case 303:
    case 307:
    case 308:
        return location;
    default:
        return {};
    }
}

std::string resolveLocation(const std::string& base, std::string_view location) {
    const std::unique_ptr<CURLU, decltype(&::curl_url_cleanup)> url(::curl_url(),
                                                                    &::curl_url_cleanup);
    char* text = nullptr;
    if (!url || ::curl_url_set(url.get(), CURLUPART_URL, base.c_str(), 0) != CURLUE_OK ||
        ::curl_url_set(url.get(), CURLUPART_URL, std::string(location).c_str(), CURLU_URLENCODE) !=
            CURLUE_OK ||
        ::curl_url_set(url.get(), CURLUPART_USER, nullptr, 0) != CURLUE_OK ||
        ::curl_url_set(url.get(), CURLUPART_PASSWORD, nullptr, 0) != CURLUE_OK ||
        ::curl_url_get(url.get(), CURLUPART_URL, &text, 0) != CURLUE_OK) {
        return {};
    }
    std::string resolved = text;
    ::curl_free(text);
    return resolved.starts_with("http://") || resolved.starts_with("https://") ? resolved
                                                                               : std::string();
}

} // namespace ca::win32
