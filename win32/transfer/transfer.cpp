#include "transfer/transfer.h"

#include <utility>
#include <winhttp.h>

namespace ca::win32 {

namespace {

// WinHTTP's default.
constexpr int maximumRedirects = 10;

} // namespace

Transfer::Transfer(TransferSettings settings)
    : settings_(std::move(settings)), exchange_(settings_) {}

bool Transfer::send() {
    return exchange_.start();
}

bool Transfer::receive() {
    for (int redirects = 0; exchange_.receiveHeaders(); ++redirects) {
        if (!isToBeFollowed()) {
            return true;
        }
        if (redirects == maximumRedirects) {
            return exchange_.fail(ERROR_WINHTTP_REDIRECT_FAILED);
        }
        if (!follow()) {
            return false;
        }
    }
    return false;
}

bool Transfer::isToBeFollowed() const {
    const std::string_view location = response().redirect();
    if (location.empty() || settings_.redirectPolicy == WINHTTP_OPTION_REDIRECT_POLICY_NEVER) {
        return false;
    }
    // The third policy forbids the way from https to http. Which scheme a Location without one
    // means is known when it is resolved.
    return settings_.redirectPolicy == WINHTTP_OPTION_REDIRECT_POLICY_ALWAYS ||
           settings_.url.starts_with("http:") ||
           !resolveLocation(settings_.url, location).starts_with("http:");
}

// The redirecting response's body isn't waited for: its connection ends here.
bool Transfer::follow() {
    settings_.url = resolveLocation(settings_.url, response().redirect());
    if (settings_.url.empty()) {
        return exchange_.fail(ERROR_WINHTTP_REDIRECT_FAILED);
    }
    exchange_.stop();
    return exchange_.start();
}

} // namespace ca::win32
