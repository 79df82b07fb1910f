// What the measured programs work on.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace ca::bench {

// Files of pseudo-random bytes, a hundred in each folder.
struct Tree {
    std::filesystem::path folder;
    std::vector<std::string> names; // relative to the folder, with '/'
    std::uintmax_t size = 0;        // bytes of each file
};

// Makes `count` files below <parent>/<count>x<size> unless an earlier run has left them there.
Tree makeTree(const std::filesystem::path& parent, int count, std::uintmax_t size);

// One file of `size` bytes in a folder of its own; with no blocks on the disk.
Tree makeSparseFile(const std::filesystem::path& folder, std::uintmax_t size);

// A manifest's text for `entries` files with every optional key, written the way the publisher's
// JSON library does it: one blank of indent a level, or all on one line for an indent of -1.
struct ManifestShape {
    int entries = 0;
    int indent = 1;
    bool optionalKeys = true;
    std::string notes;
};
std::string makeManifest(const ManifestShape& shape);

// Release notes of about `size` bytes: headings and lines of words.
std::string makeNotes(std::size_t size);

} // namespace ca::bench
