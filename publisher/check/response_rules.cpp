#include "publisher/check/response_rules.h"

#include <algorithm>
#include <charconv>

namespace ca::publisher {

namespace {

// seconds for which a cache may respond by itself: a player who presses REFRESH waits as long
constexpr long longestAge = 60;

std::string lowered(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return result;
}

std::string_view trimmed(std::string_view text) {
    const std::size_t first = std::min(text.find_first_not_of(" \t\r"), text.size());
    const std::size_t last = text.find_last_not_of(" \t\r");
    return last == std::string_view::npos ? std::string_view()
                                          : text.substr(first, last + 1 - first);
}

// The number behind `name=` in a list of directives; -1 without one.
long ageOf(const std::string& directives, std::string_view name) {
    for (std::size_t at = directives.find(name); at != std::string::npos;
         at = directives.find(name, at + 1)) {
        // "max-age=" is also the end of other directives' names.
        const bool isWhole = at == 0 || directives[at - 1] == ' ' || directives[at - 1] == ',';
        const char* const digits = directives.data() + at + name.size();
        const char* const end = directives.data() + directives.size();
        long seconds = 0;
        const bool isNumber = std::from_chars(digits, end, seconds).ec == std::errc();
        if (isWhole && isNumber) {
            return seconds;
        }
    }
    return -1;
}

void judgeAge(const Response& response, const std::string& directives,
              std::vector<Finding>& findings) {
    // A shared cache obeys s-maxage instead of max-age, and players are behind both kinds.
    const long age = std::max(ageOf(directives, "max-age="), ageOf(directives, "s-maxage="));
    const bool isImmutable = directives.find("immutable") != std::string::npos;
    if (isImmutable || age > longestAge) {
        findings.push_back(
            {true, response.url,
             "may be answered from a cache for long (Cache-Control: " + directives +
                 "), so that players get files of two releases: have the server send no-cache"});
    } else if (age < 0) {
        findings.push_back({false, response.url,
                            "leaves to every cache how long to keep it: have the server send "
                            "Cache-Control: no-cache"});
    }
}

void judgeCaching(const Response& response, std::vector<Finding>& findings) {
    const std::string directives = lowered(headerValue(response.headers, "cache-control"));
    const auto says = [&](std::string_view word) {
        return directives.find(word) != std::string::npos;
    };
    if (says("no-cache") || says("no-store")) {
        return;
    }
    judgeAge(response, directives, findings);
    const bool hasTag = !headerValue(response.headers, "etag").empty();
    const bool hasTime = !headerValue(response.headers, "last-modified").empty();
    if (!hasTag && !hasTime) {
        findings.push_back(
            {false, response.url,
             "has neither ETag nor Last-Modified, so caches fetch it whole each time"});
    }
}

// The text with each escape, such as "%20", as the byte it stands for. Others stay.
std::string unescaped(std::string_view url) {
    std::string text;
    for (std::size_t at = 0; at < url.size(); ++at) {
        const std::string_view digits = url.substr(std::min(at + 1, url.size()), 2);
        const char* const end = digits.data() + digits.size();
        unsigned byte = 0;
        const bool isNumber = std::from_chars(digits.data(), end, byte, 16).ptr == end;
        if (url[at] == '%' && digits.size() == 2 && isNumber) {
            text += static_cast<char>(byte);
            at += 2;
        } else {
            text += url[at];
        }
    }
    return text;
}

// Two addresses of one thing may differ in escapes, the default port and the host's case.
std::string comparable(std::string_view url) {
    const std::string text = unescaped(url);
    const std::size_t scheme = text.find("://");
    const std::size_t host = scheme == std::string::npos ? 0 : scheme + 3;
    const std::size_t path = std::min(text.find('/', host), text.size());
    std::string front = lowered(text.substr(0, path));
    for (const auto& [name, port] : {std::pair("http://", ":80"), std::pair("https://", ":443")}) {
        if (front.starts_with(name) && front.ends_with(port)) {
            front.erase(front.rfind(':'));
        }
    }
    return front + text.substr(path);
}

void judgeRedirection(const Response& response, std::vector<Finding>& findings) {
    if (comparable(response.url) == comparable(response.finalUrl)) {
        return;
    }
    // Without https anyone on the way sees what players get and can hold it back.
    const bool isDowngrade =
        response.url.starts_with("https:") && response.finalUrl.starts_with("http:");
    findings.push_back(
        {isDowngrade, response.url,
         "is redirected, which costs every player one more request for it: " + response.finalUrl});
}

void judgeCoding(const Response& response, std::vector<Finding>& findings) {
    const std::string coding = lowered(headerValue(response.headers, "content-encoding"));
    if (coding.empty() || coding == "identity") {
        return;
    }
    if (coding == "gzip" || coding == "deflate") {
        findings.push_back(
            {false, response.url,
             "arrives in the coding " + coding + ", which costs the server time: switch it off"});
    } else {
        findings.push_back({true, response.url,
                            "arrives in the coding " + coding + ", which launchers don't undo"});
    }
}

} // namespace

std::string headerValue(std::string_view headers, std::string_view name) {
    std::string value;
    while (!headers.empty()) {
        const std::string_view line = headers.substr(0, headers.find('\n'));
        const std::size_t colon = line.find(':');
        if (colon != std::string_view::npos && lowered(line.substr(0, colon)) == name) {
            value += value.empty() ? "" : ", ";
            value += trimmed(line.substr(colon + 1));
        }
        headers.remove_prefix(std::min(line.size() + 1, headers.size()));
    }
    return value;
}

std::vector<Finding> judgeResponse(const Response& response) {
    std::vector<Finding> findings;
    if (response.cut) {
        findings.push_back(
            {true, response.url, "ends before the length that the server announced"});
    }
    judgeRedirection(response, findings);
    judgeCoding(response, findings);
    judgeCaching(response, findings);
    return findings;
}

} // namespace ca::publisher
