#include "net/url.h"

namespace ca::net {

std::string joinUrl(std::string_view base, std::string_view relative) {
    if (relative.starts_with("http://") || relative.starts_with("https://") || base.empty()) {
        return std::string(relative);
    }
    if (relative.empty()) {
        return std::string(base);
    }
    // Only the one byte at each end counts: what else is in a URL is the server's business.
    std::string url(base);
    if (base.ends_with('/') && relative.starts_with('/')) {
        relative.remove_prefix(1);
    } else if (!base.ends_with('/') && !relative.starts_with('/')) {
        url += '/';
    }
    return url.append(relative);
}

} // namespace ca::net
