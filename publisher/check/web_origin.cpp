#include "net/download.h"
#include "net/response.h"
#include "publisher/check/origin.h"
#include "publisher/check/response_rules.h"
#include "publisher/files/digest.h"
#include "update/channel.h"

#include <charconv>

namespace ca::publisher {

namespace {

// The bytes that the headers announce; 0 where that isn't the length as launchers count it.
std::uint64_t announcedSize(const std::string& headers) {
    const bool isCoded = !headerValue(headers, "content-encoding").empty();
    if (isCoded) {
        return 0;
    }
    const std::string length = headerValue(headers, "content-length");
    std::uint64_t size = 0;
    std::from_chars(length.data(), length.data() + length.size(), size);
    return size;
}

// By the launcher's own transport, so that what it can't fetch can't be fetched here either.
// `text`, if not null, gets the bytes too.
Arrival fetch(const std::string& url, std::string* text) {
    Arrival arrival;
    net::OpenRequest open;
    std::string error;
    if (!net::openRequest(url, open, error)) {
        arrival.notes.push_back({true, url, "can't be fetched: " + error});
        return arrival;
    }
    Response response{url, net::finalUrl(open), net::responseHeaders(open), false};
    Digest digest;
    const auto take = [&](const char* data, std::size_t count) {
        digest.add(data, count);
        arrival.size += count;
        if (text != nullptr) {
            text->append(data, count);
        }
        return true;
    };
    arrival.good = net::readBody(open, take, error);
    if (!arrival.good) {
        arrival.notes.push_back({true, url, "breaks off: " + error});
    }
    arrival.sha256 = digest.text();
    // The transport takes a body that ends early for a whole one.
    response.cut = arrival.good && arrival.size < announcedSize(response.headers);
    for (Finding& finding : judgeResponse(response)) {
        arrival.notes.push_back(std::move(finding));
    }
    return arrival;
}

class WebOrigin : public Origin {
public:
    explicit WebOrigin(std::string url) : url_(std::move(url)) {}

    Arrival manifest(std::string& text) const override {
        return fetch(update::manifestUrl(url_), &text);
    }
    Arrival signature(std::string& text) const override {
        return fetch(update::signatureUrl(url_), &text);
    }
    Arrival file(const std::string& path) const override {
        return fetch(update::fileUrl(url_, path), nullptr);
    }
    std::vector<std::string> strangers(const std::vector<std::string>&) const override {
        return {}; // a web server doesn't tell
    }

private:
    std::string url_; // the channel's
};

} // namespace

bool isAddress(std::string_view text) {
    return text.find("://") != std::string_view::npos;
}

std::unique_ptr<Origin> webOrigin(const std::string& address, const std::string& channel) {
    return std::make_unique<WebOrigin>(update::channelUrl(address, channel));
}

} // namespace ca::publisher
