#include "publisher/release/release.h"

#include "publisher/files/descriptor.h"
#include "publisher/release/channel_folder.h"
#include "publisher/release/manifest_text.h"
#include "publisher/release/place_files.h"
#include "publisher/release/proof.h"
#include "publisher/release/tree.h"
#include "publisher/rules/name_rules.h"
#include "publisher/text/failure.h"
#include "publisher/text/shown.h"
#include "update/channel.h"
#include "update/version.h"

#include <algorithm>
#include <set>

namespace ca::publisher {

namespace fs = std::filesystem;

namespace {

using Lines = std::vector<std::string>;

std::string joined(const Lines& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += (text.empty() ? "" : "\n") + line;
    }
    return text;
}

// Launchers remove nothing, so a folder can't take the place of a file that players have.
void judgeFolders(const Tree& tree, const update::UpdateManifest& older, Lines& problems) {
    std::set<std::wstring> files;
    for (const update::ManifestFile& file : older.files) {
        files.insert(foldedPath(file.path));
    }
    for (const TreeFile& file : tree.files) {
        const std::wstring path = foldedPath(file.path);
        for (std::size_t end = path.find(L'/'); end != std::wstring::npos;
             end = path.find(L'/', end + 1)) {
            if (files.contains(path.substr(0, end))) {
                problems.push_back(
                    file.path + " needs a folder where players of " + shown(older.version) +
                    " have a file, which launchers never remove: name the folder otherwise");
            }
        }
    }
}

// What the release is to replace. Both other refusals are there to be overruled,
// by someone who means it.
void judgeLive(const ReleaseOptions& options, const Tree& tree, const fs::path& live,
               const fs::path& key, Lines& problems) {
    if (live.empty()) {
        return;
    }
    if (!fs::exists(live / update::manifestName)) {
        throw Failure("the live release " + live.string() +
                      " holds no manifest: remove the link that leads to it");
    }
    update::UpdateManifest manifest;
    std::string error;
    if (!options.allowNewKey && !readRelease(live, key, manifest, error)) {
        problems.push_back("the live release in " + live.string() +
                           " isn't signed with this key (" + error +
                           "): launchers that believe that one would refuse the new release; "
                           "--new-key if that is meant");
    } else if (std::string text = readWhole(live / update::manifestName);
               !update::parseManifest(text, manifest, error)) {
        problems.push_back(live.string() + " holds no manifest that can be read (" + error +
                           "): move it away");
    }
    judgeFolders(tree, manifest, problems);
    if (!options.allowOlder && update::compareVersions(options.version, manifest.version) <= 0) {
        problems.push_back("version " + options.version + " isn't newer than the live " +
                           shown(manifest.version) +
                           ", and launchers install no older one; --allow-older if that is meant");
    }
}

update::UpdateManifest headerOf(const ReleaseOptions& options) {
    update::UpdateManifest manifest;
    manifest.product = update::productName;
    manifest.channel = options.channel;
    manifest.platform = update::platformName;
    manifest.version = options.version;
    manifest.protocol_version = options.protocolVersion;
    manifest.minimum_online_version = options.minimumOnlineVersion;
    manifest.mandatory = options.mandatory;
    manifest.release_notes = options.notes;
    return manifest;
}

} // namespace

ReleaseResult makeRelease(const ReleaseOptions& options, const PassphraseSource& passphrase,
                          const std::function<void(const std::string&)>& warn) {
    Lines problems = refusalsOf(options);
    const Tree tree = scanTree(options.tree);
    problems.insert(problems.end(), tree.problems.begin(), tree.problems.end());
    if (!problems.empty()) {
        throw Failure(joined(problems));
    }
    const PrivateKey key(options.privateKey, passphrase);

    const ChannelFolder channel(options.root, options.channel);
    const fs::path stage = channel.newRelease();
    fs::path publicKey = options.publicKey.empty()
                             ? options.privateKey.parent_path() / publicKeyName
                             : options.publicKey;
    const bool derived = options.publicKey.empty() && !fs::exists(publicKey);
    if (derived) {
        writeNewFile(publicKey = stage / publicKeyName, key.publicText(), 0644);
    }
    const fs::path live = channel.live();
    judgeLive(options, tree, live, publicKey, problems);
    if (!problems.empty()) {
        throw Failure(joined(problems));
    }
    for (const Lines& warnings : {warningsAbout(options), tree.warnings}) {
        std::for_each(warnings.begin(), warnings.end(), warn);
    }

    ReleaseResult result;
    result.manifest = headerOf(options);
    PlacedFiles placed =
        placeFiles(tree, stage / update::filesName, live.empty() ? live : live / update::filesName,
                   options.linked, options.threads);
    result.manifest.files = std::move(placed.files);
    result.shared = placed.shared;
    const std::string text = manifestText(result.manifest);
    writeNewFile(stage / update::manifestName, text, 0644);
    writeNewFile(stage / update::signatureName, key.sign(text) + "\n", 0644);
    proveRelease(stage, publicKey, result.manifest);
    result.fingerprint = fingerprintOf(publicKey);
    if (derived) {
        fs::remove(publicKey);
    }
    result.folder = channel.makeLive(options.version);
    try {
        result.removed = channel.keepOnly(options.keep);
    } catch (const std::exception& failure) {
        warn(std::string("the release is live, but an older one couldn't be removed: ") +
             failure.what());
    }
    return result;
}

} // namespace ca::publisher
