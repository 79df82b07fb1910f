#include "net/download.h"
#include "net/response.h"
#include "net/url.h"
#include "publisher/check/origin.h"
#include "publisher/check/response_rules.h"
#include "publisher/files/digest_stream.h"
#include "update/channel.h"

#include <charconv>

namespace ca::publisher {

namespace {

class WebOrigin : public Origin {
public:
    explicit WebOrigin(std::string url) : url_(std::move(url)) {}

    Arrival get(const std::string& name, std::string* text) const override {
        const std::string url = net::joinUrl(url_, name);
        Arrival arrival;
        net::OpenRequest open;
        std::string error;
        DigestStream digest;
        const auto take = [&](const char* data, std::size_t count) {
            digest.add(data, count);
            arrival.size += count;
            if (text != nullptr) {
                text->append(data, count);
            }
            return true;
        };
        if (!net::openRequest(url, open, error)) {
            arrival.notes.push_back({true, url, "can't be fetched: " + error});
            return arrival;
        }
        Response response{url, net::finalUrl(open), net::responseHeaders(open), false};
        arrival.good = net::readBody(open, take, error);
        if (!arrival.good) {
            arrival.notes.push_back({true, url, "breaks off: " + error});
        }
        arrival.sha256 = digest.finish();
        response.cut = arrival.good && arrival.size < announcedSize(response.headers);
        for (Finding& finding : judgeResponse(response)) {
            arrival.notes.push_back(std::move(finding));
        }
        return arrival;
    }

    std::vector<std::string> strangers(const std::vector<std::string>&) const override {
        return {}; // a web server doesn't tell
    }

private:
    // 0 where the length isn't that of the bytes as launchers count them.
    static std::uint64_t announcedSize(const std::string& headers) {
        const std::string length = headerValue(headers, "content-length");
        std::uint64_t size = 0;
        std::from_chars(length.data(), length.data() + length.size(), size);
        return headerValue(headers, "content-encoding").empty() ? size : 0;
    }

    std::string url_;
};

} // namespace

bool isAddress(std::string_view text) {
    return text.find("://") != std::string_view::npos;
}

std::unique_ptr<Origin> webOrigin(const std::string& address, const std::string& channel) {
    return std::make_unique<WebOrigin>(
        net::joinUrl(net::joinUrl(address, channel), update::platformName));
}

} // namespace ca::publisher
