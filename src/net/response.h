// What a response says of itself, for the publisher's checks: a launcher doesn't look that close.
#pragma once

#include "net/http_client.h"

#include <string>

namespace ca::net {

// The headers of the response that openRequest has left in `open`: the status line and one line
// for each field, with CR LF. Empty if the system can't tell. Any thread.
std::string responseHeaders(const OpenRequest& open);

// The URL that the response came from, behind all redirects; empty if the system can't tell.
// Any thread.
std::string finalUrl(const OpenRequest& open);

} // namespace ca::net
