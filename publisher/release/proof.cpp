#include "publisher/release/proof.h"

#include "publisher/files/descriptor.h"
#include "publisher/keys/keys.h"
#include "publisher/text/failure.h"
#include "publisher/text/shown.h"
#include "update/channel.h"
#include "update/signature.h"

#include <tuple>

namespace ca::publisher {

namespace fs = std::filesystem;

namespace {

// Everything but the files.
auto ownFields(const update::UpdateManifest& m) {
    return std::tie(m.format, m.product, m.channel, m.platform, m.version, m.protocol_version,
                    m.minimum_online_version, m.mandatory, m.release_notes);
}

auto fields(const update::ManifestFile& file) {
    return std::tie(file.path, file.sha256, file.size, file.executable);
}

} // namespace

bool readRelease(const fs::path& folder, const fs::path& publicKey,
                 update::UpdateManifest& manifest, std::string& error) {
    const std::string text = readWhole(folder / update::manifestName);
    const std::string signature = readWhole(folder / update::signatureName);
    return update::verifyManifestSignature(text, update::trimSignature(signature), publicKey,
                                           fingerprintOf(publicKey), error) &&
           update::parseManifest(text, manifest, error);
}

void proveRelease(const fs::path& folder, const fs::path& publicKey,
                  const update::UpdateManifest& expected) {
    update::UpdateManifest seen;
    std::string error;
    if (!readRelease(folder, publicKey, seen, error)) {
        throw Failure("launchers would refuse this release with \"" + error +
                      "\", so it isn't published: is " + publicKey.string() +
                      " the other half of the private key?");
    }
    // The launcher's reader searches rather than parses, so a value could be read as another field.
    if (ownFields(seen) != ownFields(expected) || seen.files.size() != expected.files.size()) {
        throw Failure(
            "launchers would read another manifest than was written, so it isn't published");
    }
    for (std::size_t i = 0; i < seen.files.size(); ++i) {
        if (fields(seen.files[i]) != fields(expected.files[i])) {
            throw Failure("launchers would read \"" + shown(seen.files[i].path) + "\" for " +
                          expected.files[i].path +
                          ", or another digest or size, so the release isn't published");
        }
        // The digest was computed from these bytes while they were placed.
        std::error_code none;
        const fs::path placed = folder / update::filesName / expected.files[i].path;
        const bool isFile = fs::is_regular_file(fs::symlink_status(placed, none));
        if (!isFile || fs::file_size(placed, none) != seen.files[i].size) {
            throw Failure(
                placed.string() +
                " isn't as it was written: look at the disk; the release isn't published");
        }
    }
}

} // namespace ca::publisher
