// A channel's name, and where a channel root has what it serves for it. Pure; any thread.
#pragma once

#include <filesystem>
#include <string>

namespace ca::publisher {

// Whether a channel may have this name: letters, digits, '-', '_' and '.',
// not beginning with a dot.
bool isChannelName(const std::string& name);

// What `root` serves for the channel, as launchers address it: a path that leads to the live
// release, and needn't exist.
std::filesystem::path livePath(const std::filesystem::path& root, const std::string& channel);

} // namespace ca::publisher
