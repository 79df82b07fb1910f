// From a folder with the game to a live release.
#pragma once

#include "publisher/keys/keys.h"
#include "publisher/release/options.h"
#include "update/manifest.h"

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace ca::publisher {

struct ReleaseResult {
    update::UpdateManifest manifest;
    std::filesystem::path folder; // where the release is
    std::string fingerprint;      // of the key that launchers need for it
    std::size_t shared = 0;       // files that are those of the release before
    std::vector<std::string> removed;
};

// Takes one warning.
using Warn = std::function<void(const std::string& text)>;

// Scans, refuses, places, signs, proves, switches, in this order; see ChannelFolder for what is
// live when. Whatever fails or interrupts it, the live release stays whole. `warn` gets the
// warnings, before anything is written. Throws Failure, whose text names every reason to refuse,
// one a line. Blocks for as long as it takes to read the tree.
ReleaseResult makeRelease(const ReleaseOptions& options, const PassphraseSource& passphrase,
                          const Warn& warn);

} // namespace ca::publisher
