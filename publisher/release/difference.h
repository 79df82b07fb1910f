// What a player of one release gets with another.
#pragma once

#include "update/manifest.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace ca::publisher {

struct Difference {
    std::vector<update::ManifestFile> added;
    std::vector<update::ManifestFile> changed; // as they are in the newer release
    // they stay in installations: launchers delete nothing
    std::vector<update::ManifestFile> removed;
    std::uint64_t downloadBytes = 0; // for a player who has all of the older release
};

// Pure; any thread.
Difference compareReleases(const update::UpdateManifest& older,
                           const update::UpdateManifest& newer);

// The manifest in a file, or in a release's folder. Its signature isn't looked at. Throws Failure.
update::UpdateManifest loadManifest(const std::filesystem::path& place);

} // namespace ca::publisher
