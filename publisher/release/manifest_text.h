// The manifest as text, the same bytes for the same release.
#pragma once

#include "update/manifest.h"

#include <string>

namespace ca::publisher {

// One line a file, in the order of `manifest`. It is the launcher's reader that decides how a text
// is written: it knows the escapes \" \\ \n \r \t alone, so every other byte stands for itself. A
// manifest whose notes hold no other control character is JSON. Keys come in an order in which no
// value can be taken for one. Pure; any thread.
std::string manifestText(const update::UpdateManifest& manifest);

} // namespace ca::publisher
