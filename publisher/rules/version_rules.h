// Which versions a release may have. Pure; any thread.
#pragma once

#include <string>
#include <string_view>

namespace ca::publisher {

// What is wrong with a version as launchers compare it and as a folder is named; empty if nothing.
std::string versionRefusal(std::string_view version);

} // namespace ca::publisher
