#include "update/channel.h"

#include "net/url.h"

namespace ca::update {

std::string channelUrl(std::string_view server, std::string_view channel,
                       std::string_view platform) {
    return net::joinUrl(net::joinUrl(server, channel), platform);
}

std::string manifestUrl(std::string_view channelUrl) {
    return net::joinUrl(channelUrl, manifestName);
}

std::string signatureUrl(std::string_view channelUrl) {
    return net::joinUrl(channelUrl, signatureName);
}

std::string fileUrl(std::string_view channelUrl, std::string_view manifestPath) {
    return net::joinUrl(net::joinUrl(channelUrl, filesName), manifestPath);
}

std::string_view trimSignature(std::string_view text) {
    const std::size_t last = text.find_last_not_of("\t\n\r ");
    return text.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

} // namespace ca::update
