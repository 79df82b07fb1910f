#include "update/manifest.h"

#include "update/channel.h"
#include "update/digest.h"
#include "update/manifest_fields.h"
#include "update/manifest_path.h"

#include <algorithm>

namespace ca::update {

namespace {

// Each field is searched for in the whole text, so the order of the keys is free.
UpdateManifest readHeader(std::string_view text) {
    UpdateManifest manifest;
    manifest.format = static_cast<std::int32_t>(extractManifestInt(text, "format", 1));
    manifest.product = extractManifestString(text, "product");
    manifest.channel = extractManifestString(text, "channel");
    manifest.platform = extractManifestString(text, "platform");
    manifest.version = extractManifestString(text, "version");
    manifest.protocol_version =
        static_cast<std::int32_t>(extractManifestInt(text, "protocol_version", 0));
    manifest.minimum_online_version = extractManifestString(text, "minimum_online_version");
    manifest.mandatory = extractManifestBool(text, "mandatory");
    manifest.release_notes = extractManifestString(text, "release_notes");
    return manifest;
}

bool isValidHeader(const UpdateManifest& manifest) {
    return manifest.format == manifestFormat && manifest.product == productName &&
           !manifest.version.empty() && !manifest.platform.empty();
}

// Everything behind the first bracket that follows the key; empty when there is none.
std::string_view filesArray(std::string_view text) {
    constexpr std::string_view key = "\"files\"";
    const std::size_t found = text.find(key);
    if (found == std::string_view::npos) {
        return {};
    }
    const std::size_t bracket = text.find('[', found + key.size());
    return bracket == std::string_view::npos ? std::string_view{} : text.substr(bracket + 1);
}

// The texts of the array's objects. An object inside another stays in the outer one's text, and one
// that is never closed gives nothing.
std::vector<std::string_view> cutObjects(std::string_view array) {
    std::vector<std::string_view> objects;
    std::int64_t depth = 0;
    std::size_t start = std::string_view::npos;
    for (std::size_t at = 0; at < array.size(); ++at) {
        switch (array[at]) {
        case '"':
            at = endOfManifestString(array, at);
            break;
        case '{':
            if (depth == 0) {
                start = at;
            }
            ++depth;
            break;
        case '}':
            --depth;
            if (depth == 0 && start != std::string_view::npos) {
                objects.push_back(array.substr(start, at - start + 1));
                start = std::string_view::npos;
            }
            break;
        case ']':
            if (depth == 0) {
                return objects;
            }
            break;
        default:
            break;
        }
    }
    return objects;
}

bool readFile(std::string_view object, ManifestFile& file) {
    file.path = extractManifestString(object, "path");
    file.sha256 = extractManifestString(object, "sha256");
    file.size = static_cast<std::uint64_t>(
        std::max<std::int64_t>(extractManifestInt(object, "size", 0), 0));
    file.executable = extractManifestBool(object, "executable");
    return isSafeManifestPath(file.path) && file.sha256.size() == sha256TextLength;
}

} // namespace

bool parseManifest(std::string_view text, UpdateManifest& manifest, std::string& error) {
    UpdateManifest parsed = readHeader(text);
    if (!isValidHeader(parsed)) {
        error = "manifest_header_invalid";
        return false;
    }
    // All are cut out before the first is read: their number is known then, so the records are
    // made once.
    const std::vector<std::string_view> objects = cutObjects(filesArray(text));
    parsed.files.reserve(objects.size());
    for (const std::string_view object : objects) {
        if (!readFile(object, parsed.files.emplace_back())) {
            error = "manifest_file_invalid";
            return false;
        }
    }
    if (parsed.files.empty()) {
        error = "manifest_has_no_files";
        return false;
    }
    manifest = std::move(parsed);
    return true;
}

} // namespace ca::update
