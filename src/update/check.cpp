#include "install/paths.h"
#include "net/download.h"
#include "net/url.h"
#include "update/digest.h"
#include "update/manifest_path.h"
#include "update/signature.h"
#include "update/updater.h"

namespace ca::update {

namespace fs = std::filesystem;

namespace {

constexpr const char* platformName = "windows";

// A mirror or an editor may leave blanks and line ends behind the signature; in front
// of it they are an error.
std::string_view trimEnd(std::string_view text) {
    const std::size_t last = text.find_last_not_of("\t\n\r ");
    return text.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

// Lists the files that differ. Trouble with a local file is no failure: it makes
// that file one of the list.
void scan(const fs::path& installDir, UpdatePlan& plan) {
    for (const ManifestFile& file : plan.manifest.files) {
        const fs::path relative = relativePath(file.path);
        fs::path target = installDir / relative;
        const bool present = install::isFile(target);
        if (present && sha256File(target) == file.sha256) {
            continue;
        }
        plan.totalBytes += file.size;
        if (relative.filename() == install::launcherFileName) {
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
    const std::string channelUrl = net::joinUrl(net::joinUrl(serverUrl, channel), platformName);
    std::string manifestText;
    std::string signatureText;
    if (!net::fetchText(net::joinUrl(channelUrl, "manifest.json"), manifestText, error) ||
        !net::fetchText(net::joinUrl(channelUrl, "manifest.sig"), signatureText, error) ||
        !verifyManifestSignature(manifestText, trimEnd(signatureText),
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
    scan(installDir, fresh);
    plan = std::move(fresh);
    return true;
}

} // namespace ca::update
