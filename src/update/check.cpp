#include "install/paths.h"
#include "net/download.h"
#include "system/file_kind.h"
#include "update/channel.h"
#include "update/digest.h"
#include "update/manifest_path.h"
#include "update/signature.h"
#include "update/updater.h"

namespace ca::update {

namespace fs = std::filesystem;

namespace {

// Lists the files that differ. Trouble with a local file is no failure: it makes
// that file one of the list.
void scan(const fs::path& installDir, UpdatePlan& plan) {
    for (const ManifestFile& file : plan.manifest.files) {
        // The digest decides alone: a size or a time would spare the reading, and let damage pass.
        const fs::path relative = relativePath(file.path);
        fs::path target = installDir / relative;
        const bool present = system::isFile(target);
        if (present && sha256File(target) == file.sha256) {
            continue;
        }
        plan.totalBytes += file.size;
        if (isLauncherFile(relative)) {
            plan.launcherUpdate = true;
        }
        plan.files.push_back({file, std::move(target), !present});
    }
}

} // namespace

bool Updater::check(const std::string& channel, UpdatePlan& plan, std::string& error) const {
    if (serverUrl.empty()) {
        error = "update_server_not_configured";
        return false;
    }
    const std::string address = channelUrl(serverUrl, channel);
    // Before any file is looked at: what another launcher does from here on makes the plan stale.
    const LastAttempt lastAttempt = findLastAttempt(installDir);
    // Both texts arrive before either is looked at, and nothing of the manifest is read before its
    // signature has been verified.
    std::string manifestText;
    std::string signatureText;
    if (!net::fetchText(manifestUrl(address), manifestText, error) ||
        !net::fetchText(signatureUrl(address), signatureText, error) ||
        !verifyManifestSignature(manifestText, trimSignature(signatureText),
                                 install::publicKeyFile(installDir), error)) {
        return false;
    }

    UpdatePlan fresh;
    if (!parseManifest(manifestText, fresh.manifest, error)) {
        return false;
    }
    if (fresh.manifest.channel != channel || fresh.manifest.platform != platformName) {
        error = "manifest_channel_or_platform_mismatch";
        return false;
    }
    fresh.lastAttempt = lastAttempt;
    scan(installDir, fresh);
    plan = std::move(fresh);
    return true;
}

} // namespace ca::update
