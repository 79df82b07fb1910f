#include "publisher/rules/channel_name.h"

#include "update/channel.h"

namespace ca::publisher {

bool isChannelName(const std::string& name) {
    return !name.empty() && name.size() <= 64 && name.front() != '.' &&
           name.find_first_not_of(
               "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_.") ==
               std::string::npos;
}

std::filesystem::path livePath(const std::filesystem::path& root, const std::string& channel) {
    return root / channel / update::platformName;
}

} // namespace ca::publisher
