// What the publisher asks for, and what is wrong with it before any file is looked at.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace ca::publisher {

struct ReleaseOptions {
    std::filesystem::path tree;
    std::filesystem::path root; // of the channels; made if missing
    std::filesystem::path privateKey;
    std::filesystem::path publicKey; // empty: update_public_key.pem beside the private key
    std::string channel = "stable";
    std::string version;
    std::string minimumOnlineVersion; // empty: any version may play on
    std::string notes;                // UTF-8
    std::int32_t protocolVersion = 1;
    bool mandatory = false;
    bool allowOlder = false;  // also a version that isn't newer than the live one
    bool allowNewKey = false; // also with another key than that of the live release
    bool linked = false;      // the tree's own files instead of copies; see placeFiles
    std::size_t keep = 3;     // releases besides the live one
    unsigned threads = 1;
};

// One line for each reason to refuse the options. Asks the disk where root and tree are.
std::vector<std::string> refusalsOf(const ReleaseOptions& options);

// One line for each thing that the publisher may not have meant.
std::vector<std::string> warningsAbout(const ReleaseOptions& options);

} // namespace ca::publisher
