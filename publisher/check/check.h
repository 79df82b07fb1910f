// What players would find at a channel: the launcher's own transport and rules,
// applied to every byte.
#pragma once

#include "publisher/check/finding.h"
#include "update/manifest.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace ca::publisher {

struct CheckOptions {
    // a launcher's server address (http or https), or a channel root on this machine
    std::string address;
    std::string channel = "stable";
    std::filesystem::path publicKey; // empty: the signature isn't verified, which is a finding
    unsigned threads = 1;
};

struct CheckResult {
    update::UpdateManifest manifest; // without files if none could be believed
    std::uint64_t bytes = 0;         // of all files, as they came
    std::vector<Finding> findings;   // problems first
    bool good() const;               // no problem among them; mere advice may be
};

// Reads manifest, signature and every file. Whatever is wrong becomes a finding; throws Failure
// only for a key file that can't be read. Blocks.
CheckResult checkChannel(const CheckOptions& options);

} // namespace ca::publisher
