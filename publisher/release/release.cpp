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
#include <optional>
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

// Nothing more is judged by a manifest that can't be read.
std::optional<update::UpdateManifest> loadLive(const fs::path& live, Lines& problems) {
    if (!fs::exists(live / update::manifestName)) {
        problems.push_back("the live release " + live.string() +
                           " holds no manifest: remove the link that leads to it");
        return std::nullopt;
    }
    update::UpdateManifest manifest;
    std::string error;
    if (!update::parseManifest(readWhole(live / update::manifestName), manifest, error)) {
        problems.push_back(live.string() + " holds no manifest that can be read (" + error +
                           "): move it away");
        return std::nullopt;
    }
    return manifest;
}

bool judgeKey(const ReleaseOptions& options, const fs::path& live, const fs::path& publicKey,
              Lines& problems) {
    if (options.allowNewKey) {
        return true;
    }
    update::UpdateManifest ignored; // loadLive has it
    std::string error;
    if (readRelease(live, publicKey, ignored, error)) {
        return true;
    }
    problems.push_back("the live release in " + live.string() + " isn't signed with this key (" +
                       error +
                       "): launchers that believe that one would refuse the new release; "
                       "--new-key if that is meant");
    return false;
}

void judgeVersion(const ReleaseOptions& options, const update::UpdateManifest& older,
                  Lines& problems) {
    const bool isNewer = update::compareVersions(options.version, older.version) > 0;
    if (!isNewer && !options.allowOlder) {
        problems.push_back("version " + options.version + " isn't newer than the live " +
                           shown(older.version) +
                           ", and launchers install no older one; --allow-older if that is meant");
    }
}

// What the release is to replace. A publisher who means it can overrule what is said of the key
// and of the version.
Lines judgeLive(const ReleaseOptions& options, const Tree& tree, const fs::path& live,
                const fs::path& publicKey) {
    Lines problems;
    if (live.empty()) {
        return problems;
    }
    const std::optional<update::UpdateManifest> older = loadLive(live, problems);
    if (older && judgeKey(options, live, publicKey, problems)) {
        judgeFolders(tree, *older, problems);
        judgeVersion(options, *older, problems);
    }
    return problems;
}

void refuseFor(const Lines& problems) {
    if (!problems.empty()) {
        throw Failure(joined(problems));
    }
}

Tree scanAndRefuse(const ReleaseOptions& options) {
    Lines problems = refusalsOf(options);
    Tree tree = scanTree(options.tree);
    problems.insert(problems.end(), tree.problems.begin(), tree.problems.end());
    refuseFor(problems);
    return tree;
}

// The public key as launchers have it.
struct LaunchersKey {
    fs::path file;
    bool isDerived = false; // written to the stage for the proof, and no part of the release
};

LaunchersKey findPublicKey(const ReleaseOptions& options, const PrivateKey& key,
                           const fs::path& stage) {
    if (!options.publicKey.empty()) {
        return {options.publicKey, false};
    }
    const fs::path beside = options.privateKey.parent_path() / publicKeyName;
    if (fs::exists(beside)) {
        return {beside, false};
    }
    const fs::path derived = stage / publicKeyName;
    writeNewFile(derived, key.publicText(), 0644);
    return {derived, true};
}

update::UpdateManifest manifestFor(const ReleaseOptions& options) {
    update::UpdateManifest manifest;
    manifest.format = update::manifestFormat;
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

void place(const ReleaseOptions& options, const Tree& tree, const fs::path& live,
           const fs::path& stage, ReleaseResult& result) {
    const fs::path older = live.empty() ? live : live / update::filesName;
    PlacedFiles placed =
        placeFiles(tree, stage / update::filesName, older, options.linked, options.threads);
    result.manifest = manifestFor(options);
    result.manifest.files = std::move(placed.files);
    result.shared = placed.shared;
}

void sign(const update::UpdateManifest& manifest, const PrivateKey& key, const fs::path& stage) {
    const std::string text = manifestText(manifest);
    writeNewFile(stage / update::manifestName, text, 0644);
    writeNewFile(stage / update::signatureName, key.sign(text) + "\n", 0644);
}

// A failure is a warning only: the new release is live by then.
Lines removeOld(const ChannelFolder& channel, std::size_t keep, const Warn& warn) {
    try {
        return channel.keepOnly(keep);
    } catch (const std::exception& failure) {
        warn(std::string("the release is live, but an older one couldn't be removed: ") +
             failure.what());
        return {};
    }
}

} // namespace

ReleaseResult makeRelease(const ReleaseOptions& options, const PassphraseSource& passphrase,
                          const Warn& warn) {
    const Tree tree = scanAndRefuse(options);
    const PrivateKey key(options.privateKey, passphrase);
    const ChannelFolder channel(options.root, options.channel);
    const fs::path stage = channel.newRelease();
    const LaunchersKey publicKey = findPublicKey(options, key, stage);
    const fs::path live = channel.live();
    refuseFor(judgeLive(options, tree, live, publicKey.file));
    for (const Lines& warnings : {warningsAbout(options), tree.warnings}) {
        std::for_each(warnings.begin(), warnings.end(), warn);
    }

    ReleaseResult result;
    place(options, tree, live, stage, result);
    sign(result.manifest, key, stage);
    proveRelease(stage, publicKey.file, result.manifest);
    result.fingerprint = fingerprintOf(publicKey.file);
    if (publicKey.isDerived) {
        fs::remove(publicKey.file);
    }
    result.folder = channel.makeLive(options.version);
    result.removed = removeOld(channel, options.keep, warn);
    return result;
}

} // namespace ca::publisher
