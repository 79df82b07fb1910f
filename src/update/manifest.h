// The manifest: what an update channel offers for one platform, and every file of it with its
// digest. Pure; any thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ca::update {

// One file of the installation. Fields are named like the manifest's keys.
struct ManifestFile {
    // relative to the installation, UTF-8, as the manifest spells it; passes isSafeManifestPath
    std::string path;
    std::string sha256;     // 64 bytes; only lower-case hexadecimal digits can ever match a file
    std::uint64_t size = 0; // bytes; for progress alone, no file is tested against it
    bool executable = false;
};

struct UpdateManifest {
    std::int32_t format = 1;
    std::string product;
    std::string channel;
    std::string platform;
    std::string version; // as spelt; ordered by compareVersions
    std::int32_t protocol_version = 0;
    std::string minimum_online_version; // empty: none
    bool mandatory = false;
    std::string release_notes;
    std::vector<ManifestFile> files; // never empty after a successful parse
};

// Reads a manifest's text, taken as bytes, in time linear in its length. The text is searched, not
// tokenised: a field is found by the first occurrence of its quoted key, and the entries of "files"
// by counting braces. A malformed value reads as an absent one. False: `manifest` is unchanged and
// `error` is, in this order of precedence, "manifest_header_invalid", "manifest_file_invalid" (one
// bad entry refuses the whole) or "manifest_has_no_files".
bool parseManifest(std::string_view text, UpdateManifest& manifest, std::string& error);

} // namespace ca::update
