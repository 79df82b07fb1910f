// Bringing the tree's files into a release's folder, and their digests into its manifest.
#pragma once

#include "publisher/release/tree.h"
#include "update/manifest.h"

#include <filesystem>
#include <vector>

namespace ca::publisher {

struct PlacedFiles {
    std::vector<update::ManifestFile> files; // in the tree's order
    std::size_t shared = 0;                  // how many are the older release's own files
};

// Puts every file of `tree` below `target`, an existing folder. One that has the same bytes below
// `older` (empty: there is none) becomes another name of that file, so that it costs no room, and
// web servers and caches see that it is the same. All others are copied; with `linked` they become
// other names of the tree's files where the file system allows it. A digest is that of the bytes
// that are then in the release, even if the tree changes meanwhile. Blocks of zeros take no room.
// Memory doesn't grow with the files. Throws Failure.
PlacedFiles placeFiles(const Tree& tree, const std::filesystem::path& target,
                       const std::filesystem::path& older, bool linked, unsigned threads);

} // namespace ca::publisher
