// Reading a release back from the disk as a launcher would.
#pragma once

#include "update/manifest.h"

#include <filesystem>
#include <string>

namespace ca::publisher {

// The manifest of the release in `folder`, if the launcher's own code finds it signed by
// the key in `publicKey` and can read it. False: `error` is the launcher's token. Throws
// Failure if a file is missing.
bool readRelease(const std::filesystem::path& folder, const std::filesystem::path& publicKey,
                 update::UpdateManifest& manifest, std::string& error);

// Throws Failure unless the release reads back as exactly `expected`, field by field, and every
// file is there with its size. The last line of defence before players get it: it fails only
// through a fault of this program or of the disk.
void proveRelease(const std::filesystem::path& folder, const std::filesystem::path& publicKey,
                  const update::UpdateManifest& expected);

} // namespace ca::publisher
