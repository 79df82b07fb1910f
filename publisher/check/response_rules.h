// What a response's headers promise, and whether launchers and caches take it as the publisher
// means it. Pure; any thread.
#pragma once

#include "publisher/check/finding.h"

#include <string>
#include <string_view>
#include <vector>

namespace ca::publisher {

// What was asked for, and what came.
struct Response {
    std::string url;      // as asked for
    std::string finalUrl; // behind all redirects
    std::string headers;  // of finalUrl: a status line and one line a header, with CR LF
    bool cut = false;     // fewer bytes came than the headers announced
};

// The value of a header, without the spaces around it; empty without one. `name` is in lower case;
// the headers' own names may be in any. Several of one name are joined by ", ".
std::string headerValue(std::string_view headers, std::string_view name);

// Every file of a channel keeps its address from release to release, so no cache may respond with
// one without asking the server, and nothing may change it on its way.
std::vector<Finding> judgeResponse(const Response& response);

} // namespace ca::publisher
