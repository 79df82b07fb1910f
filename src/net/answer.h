// What an answer says of itself, for those who look closer than a launcher does.
#pragma once

#include "net/http_client.h"

#include <string>

namespace ca::net {

// The head of the answer in `open`, which openRequest has made ready: the status line and one line
// a field, each with CR LF. Empty if the system can't tell. Any thread.
std::string answerHead(const OpenRequest& open);

// The address that the answer came from, behind all redirects; empty if the system
// can't tell. Any thread.
std::string finalUrl(const OpenRequest& open);

} // namespace ca::net
