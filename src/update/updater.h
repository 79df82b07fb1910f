// The update engine: what the channel offers, which files of the installation differ,
// and how they get there.
#pragma once

#include "update/manifest.h"
#include "update/work_lock.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace ca::update {

// One file that needs work.
struct PlanFile {
    ManifestFile file;
    std::filesystem::path target; // its place in the installation
    // no regular file stood there; false for one that differs or can't be read
    bool missing = false;
};

// The answer of a check.
struct UpdatePlan {
    UpdateManifest manifest;      // whole, with the files that need no work too
    std::vector<PlanFile> files;  // in the manifest's order; empty when every file is intact
    std::uint64_t totalBytes = 0; // sum of the sizes of `files`, as the manifest gives them
    bool launcherUpdate = false;  // one of `files` bears the launcher's file name
    // Of the installation, when the check began; without it, `apply` takes the plan for current.
    std::optional<LastAttempt> lastAttempt;
};

// Bytes done and bytes in all. A file that is larger than its manifest says can drive the
// first past the second.
using ProgressCallback = std::function<void(std::uint64_t done, std::uint64_t total)>;

// Made for one job and dropped with it. Belongs to one thread, which its calls block
// for as long as they take.
class Updater {
public:
    explicit Updater(std::filesystem::path installationFolder)
        : installDir(std::move(installationFolder)) {}

    // Fetches manifest and signature of `channel`, believes them only if the signature holds, and
    // compares the digest of every file that the manifest lists. Changes nothing on disk and
    // compares no versions. False: `plan` is unchanged and `error` holds a token of fetchText,
    // verifyManifestSignature or parseManifest, "update_server_not_configured" or
    // "manifest_channel_or_platform_mismatch". `error` has no meaning after true.
    bool check(const std::string& channel, UpdatePlan& plan, std::string& error) const;

    // Installs `plan`. First every file is downloaded into a stage folder and its digest checked,
    // with the installation untouched; then each is moved into place, the old one into a backup
    // folder; last comes the version marker. Any failure undoes what was done, as far as two
    // seconds of trying go. A plan without files does nothing and succeeds. A new launcher stays in
    // the stage folder, since a running program can't be replaced by itself: `stagedLauncher`, if
    // not null, then names it, and is empty otherwise. `progress` may be empty and is called during
    // the downloads alone. False: `error` holds a token of downloadToFile,
    // "update_downgrade_blocked:" and the plan's version, "update_workdir_failed" (also while
    // another launcher installs, and when one has begun to since the check),
    // "version_marker_write_failed", or one of these and the manifest's path:
    // "update_duplicate_path:", "download_hash_mismatch:", "update_destination_failed:",
    // "update_backup_failed:", "update_install_failed:".
    bool apply(const UpdatePlan& plan, const ProgressCallback& progress, std::string& error,
               std::filesystem::path* stagedLauncher) const;

    // Makes the version marker name the plan's version, for a plan without files: every file was
    // intact and only the marker is behind. False, with nothing changed, if another launcher is at
    // work or has been since the check, and when the marker can't be written.
    bool confirmVersion(const UpdatePlan& plan) const;

    // Whether the plan still tells how the installation is: no other launcher is at work, and none
    // has begun to install since the check. Waits up to half a second.
    bool isCurrent(const UpdatePlan& plan) const;

    std::filesystem::path installDir;
    std::string serverUrl; // UTF-8; empty until the caller sets it
};

} // namespace ca::update
