// The folder with the game, looked at before anything is done with it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace ca::publisher {

struct TreeFile {
    std::string path;       // UTF-8, relative to the tree, with slashes
    std::uint64_t size = 0; // bytes
};

struct Tree {
    std::filesystem::path folder;
    std::vector<TreeFile> files;       // in the order of their paths' bytes
    std::vector<std::string> problems; // one line each: why players couldn't install the tree
    std::vector<std::string> warnings; // one line each: what the publisher may not have meant

    std::uint64_t bytes() const;
};

// Everything below `folder`, with all that is wrong with it; reads no file. Throws Failure if
// the folder can't be read.
Tree scanTree(const std::filesystem::path& folder);

} // namespace ca::publisher
