// Composing URLs of the update channel.
#pragma once

#include <string>
#include <string_view>

namespace ca::net {

// `base` and `relative` with exactly one slash between them. A `relative` that begins with
// "http://" or "https://" (exact bytes) replaces `base`; an empty part gives the other one alone.
// Nothing is escaped or normalised. Pure; any thread.
std::string joinUrl(std::string_view base, std::string_view relative);

} // namespace ca::net
