#include "publisher/release/difference.h"

#include "publisher/files/descriptor.h"
#include "publisher/text/failure.h"
#include "update/channel.h"

#include <string_view>
#include <unordered_map>

namespace ca::publisher {

Difference compareReleases(const update::UpdateManifest& older,
                           const update::UpdateManifest& newer) {
    // What no file of the newer release has been found for yet.
    std::unordered_map<std::string_view, const update::ManifestFile*> left;
    for (const update::ManifestFile& file : older.files) {
        left.emplace(file.path, &file);
    }
    Difference difference;
    for (const update::ManifestFile& file : newer.files) {
        const auto before = left.find(file.path);
        const bool isNew = before == left.end();
        if (isNew || before->second->sha256 != file.sha256) {
            (isNew ? difference.added : difference.changed).push_back(file);
            difference.downloadBytes += file.size;
        }
        if (!isNew) {
            left.erase(before);
        }
    }
    // From the list, which keeps its order, and not from the map.
    for (const update::ManifestFile& file : older.files) {
        if (left.contains(file.path)) {
            difference.removed.push_back(file);
        }
    }
    return difference;
}

update::UpdateManifest loadManifest(const std::filesystem::path& place) {
    const std::filesystem::path file =
        std::filesystem::is_directory(place) ? place / update::manifestName : place;
    update::UpdateManifest manifest;
    std::string error;
    if (!update::parseManifest(readWhole(file), manifest, error)) {
        throw Failure(file.string() + " is no manifest that launchers can read (" + error + ")");
    }
    return manifest;
}

} // namespace ca::publisher
