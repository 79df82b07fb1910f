#include "publisher/check/response_rules.h"

#include <algorithm>
#include <charconv>

namespace ca::publisher {

namespace {

// seconds that a cache may answer by itself: a player who presses REFRESH waits as long
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
        const bool isWhole = at == 0 || directives[at - 1] == ' ' || directives[at - 1] == ',';
        const char* const digits = directives.data() + at + name.size();
        long seconds = 0;
        if (isWhole && std::from_chars(digits, directives.data() + directives.size(), seconds).ec ==
                           std::errc()) {
            return seconds;
        }
    }
    return -1;
}

void judgeCaching(const AnswerHead& head, std::vector<Finding>& findings) {
    const std::string directives = lowered(fieldValue(head.fields, "cache-control"));
    const auto says = [&](std::string_view word) {
        return directives.find(word) != std::string::npos;
    };
    if (says("no-cache") || says("no-store")) {
        return;
    }
    const long age = std::max(ageOf(directives, "max-age="), ageOf(directives, "s-maxage="));
    if (says("immutable") || age > longestAge) {
        findings.push_back(
            {true, head.url,
             "may be answered from a cache for long (Cache-Control: " + directives +
                 "), so that players get files of two releases: have the server send no-cache"});
    } else if (age < 0) {
        findings.push_back({false, head.url,
                            "leaves to every cache how long to keep it: have the server send "
                            "Cache-Control: no-cache"});
    }
    if (fieldValue(head.fields, "etag").empty() &&
        fieldValue(head.fields, "last-modified").empty()) {
        findings.push_back(
            {false, head.url,
             "has neither ETag nor Last-Modified, so caches fetch it whole each time"});
    }
}

// As far as two addresses of one thing may be spelt otherwise: escapes, the default
// port, the host's case.
std::string comparable(std::string_view url) {
    std::string text;
    for (std::size_t at = 0; at < url.size(); ++at) {
        unsigned byte = 0;
        if (url[at] == '%' && at + 2 < url.size() &&
            std::from_chars(url.data() + at + 1, url.data() + at + 3, byte, 16).ptr ==
                url.data() + at + 3) {
            text += static_cast<char>(byte);
            at += 2;
        } else {
            text += url[at];
        }
    }
    const std::size_t host = text.find("://") == std::string::npos ? 0 : text.find("://") + 3;
    const std::size_t path = std::min(text.find('/', host), text.size());
    std::string front = lowered(text.substr(0, path));
    for (const auto& [scheme, port] :
         {std::pair("http://", ":80"), std::pair("https://", ":443")}) {
        if (front.starts_with(scheme) && front.ends_with(port)) {
            front.erase(front.rfind(':'));
        }
    }
    return front + text.substr(path);
}

} // namespace

std::string fieldValue(std::string_view fields, std::string_view name) {
    std::string value;
    while (!fields.empty()) {
        const std::string_view line = fields.substr(0, fields.find('\n'));
        const std::size_t colon = std::min(line.find(':'), line.size());
        if (colon != line.size() && lowered(line.substr(0, colon)) == name) {
            (value += value.empty() ? "" : ", ") += trimmed(line.substr(colon + 1));
        }
        fields.remove_prefix(std::min(line.size() + 1, fields.size()));
    }
    return value;
}

std::vector<Finding> judgeAnswer(const AnswerHead& head) {
    std::vector<Finding> findings;
    if (head.cut) {
        findings.push_back({true, head.url, "ends before the length that the server announced"});
    }
    if (comparable(head.url) != comparable(head.finalUrl)) {
        const bool isDowngrade =
            head.url.starts_with("https:") && head.finalUrl.starts_with("http:");
        findings.push_back(
            {isDowngrade, head.url,
             "is redirected, which costs every player one more request for it: " + head.finalUrl});
    }
    const std::string coding = lowered(fieldValue(head.fields, "content-encoding"));
    if (coding == "gzip" || coding == "deflate") {
        findings.push_back(
            {false, head.url,
             "arrives in the coding " + coding + ", which costs the server time: switch it off"});
    } else if (!coding.empty() && coding != "identity") {
        findings.push_back(
            {true, head.url, "arrives in the coding " + coding + ", which launchers don't undo"});
    }
    judgeCaching(head, findings);
    return findings;
}

} // namespace ca::publisher
