#include "install/paths.h"
#include "install/text_file.h"
#include "install/version_marker.h"
#include "net/download.h"
#include "system/file_kind.h"
#include "system/files.h"
#include "system/folders.h"
#include "system/retry.h"
#include "update/channel.h"
#include "update/digest.h"
#include "update/manifest_path.h"
#include "update/rollback.h"
#include "update/updater.h"
#include "update/version.h"

#include <algorithm>
#include <map>

namespace ca::update {

namespace fs = std::filesystem;

namespace {

constexpr system::RetryTimes flushTimes{.limit = 2000, .firstPause = 10, .longestPause = 200};

// One file of the plan, its path as this system has it.
struct PlannedFile {
    const ManifestFile* file;
    fs::path relative;
};

// One call of Updater::apply.
struct Attempt {
    const UpdatePlan& plan;
    const fs::path& installDir;
    fs::path stage;                 // folder of the staged files
    fs::path backup;                // folder of the replaced ones
    std::vector<PlannedFile> files; // each path once
};

bool fail(std::string& error, std::string_view token, std::string_view detail = {}) {
    error = token;
    error += detail;
    return false;
}

// By the raw marker: an installation without one may be given any version.
bool isDowngrade(const fs::path& installDir, const UpdatePlan& plan) {
    const std::string marker = install::readTextFile(install::versionMarkerFile(installDir));
    return !marker.empty() && compareVersions(marker, plan.manifest.version) > 0;
}

// Whether the plan still tells what the installation needs: nobody has begun an update since.
bool isUntouched(const UpdatePlan& plan, const fs::path& installDir) {
    return !plan.lastAttempt || *plan.lastAttempt == newestAttempt(installDir);
}

// A path that is named again with the same digest is the same file; with another digest no
// installation could satisfy both.
bool listFiles(const UpdatePlan& plan, std::vector<PlannedFile>& files, std::string& error) {
    std::map<fs::path::string_type, const ManifestFile*> seen;
    for (const PlanFile& planFile : plan.files) {
        const ManifestFile& file = planFile.file;
        fs::path relative = relativePath(file.path);
        const auto [entry, isNew] = seen.try_emplace(relative.native(), &file);
        if (isNew) {
            files.push_back({&file, std::move(relative)});
        } else if (entry->second->sha256 != file.sha256) {
            return fail(error, "update_duplicate_path:", file.path);
        }
    }
    return true;
}

// Downloads every file into the stage folder and checks its digest. Touches nothing of the
// installation.
bool fetch(const Attempt& attempt, const std::string& serverUrl, const ProgressCallback& progress,
           std::string& error) {
    const UpdateManifest& manifest = attempt.plan.manifest;
    const std::uint64_t totalBytes = attempt.plan.totalBytes;
    const std::string address = channelUrl(serverUrl, manifest.channel, manifest.platform);
    std::uint64_t completedBytes = 0;
    for (const auto& [file, relative] : attempt.files) {
        const fs::path staged = attempt.stage / relative;
        std::uint64_t currentBytes = 0;
        const auto report = [&](std::uint64_t done, std::uint64_t) {
            currentBytes = done;
            if (progress) {
                progress(completedBytes + done, totalBytes);
            }
        };
        if (!net::downloadToFile(fileUrl(address, file->path), staged, report, error)) {
            return false;
        }
        if (sha256File(staged) != file->sha256) {
            return fail(error, "download_hash_mismatch:", file->path);
        }
        // A power cut after the move must not leave the name without the bytes.
        // A scanner may have the new file open.
        if (!system::withRetries(flushTimes, [&] { return system::flushFile(staged); })) {
            return fail(error, "download_write_failed");
        }
        completedBytes += std::max(file->size, currentBytes);
        if (progress) {
            progress(std::min(completedBytes, totalBytes), totalBytes);
        }
    }
    return true;
}

// As `fetch`; after a failure, memory that ran out among them, nothing that was staged stays.
bool fetchOrTidy(const Attempt& attempt, const std::string& serverUrl,
                 const ProgressCallback& progress, std::string& error) {
    try {
        if (fetch(attempt, serverUrl, progress, error)) {
            return true;
        }
    } catch (...) {
        system::removeFolder(attempt.stage);
        throw;
    }
    system::removeFolder(attempt.stage);
    return false;
}

// Moves what is at the target into the backup folder.
bool moveAside(const fs::path& target, const fs::path& backup, Rollback& rollback) {
    // Made before the move, because recording it must not fail then.
    RollbackEntry entry{target, backup};
    system::makeFolders(backup.parent_path()); // a failure shows in the move
    // A backup is never overwritten: where two names mean one file, the first backup is the
    // player's.
    if (!system::moveFile(target, backup)) {
        return false;
    }
    rollback.add(std::move(entry));
    return true;
}

// Moves a staged file to its target. A new one needs an entry of its own; one that replaces another
// is undone by the entry of what was moved aside.
bool moveIn(const fs::path& staged, const fs::path& target, bool isNew, Rollback& rollback) {
    RollbackEntry entry{target, {}};
    if (!system::replaceFile(staged, target)) {
        return false;
    }
    if (isNew) {
        rollback.add(std::move(entry));
    }
    return true;
}

bool installFile(const Attempt& attempt, const PlannedFile& planned, Rollback& rollback,
                 std::string& error) {
    const std::string& path = planned.file->path;
    const fs::path target = attempt.installDir / planned.relative;
    if (!system::makeFolders(target.parent_path())) {
        return fail(error, "update_destination_failed:", path);
    }
    const bool isNew = !system::pathExists(target);
    if (!isNew && !moveAside(target, attempt.backup / planned.relative, rollback)) {
        return fail(error, "update_backup_failed:", path);
    }
    if (!moveIn(attempt.stage / planned.relative, target, isNew, rollback)) {
        return fail(error, "update_install_failed:", path);
    }
    return true;
}

// Installs every file but the launcher, which stays staged and whose staged path is returned in
// `launcher`; of several the last.
bool installFiles(const Attempt& attempt, Rollback& rollback, fs::path& launcher,
                  std::string& error) {
    for (const PlannedFile& planned : attempt.files) {
        if (isLauncherFile(planned.relative)) {
            launcher = attempt.stage / planned.relative;
        } else if (!installFile(attempt, planned, rollback, error)) {
            return false;
        }
    }
    return true;
}

} // namespace

bool Updater::apply(const UpdatePlan& plan, const ProgressCallback& progress, std::string& error,
                    fs::path* stagedLauncher) const {
    if (stagedLauncher) {
        stagedLauncher->clear();
    }
    if (isDowngrade(installDir, plan)) {
        return fail(error, "update_downgrade_blocked:", plan.manifest.version);
    }
    if (plan.files.empty()) {
        return true;
    }

    Attempt attempt{plan, installDir, {}, {}, {}};
    if (!listFiles(plan, attempt.files, error)) {
        return false;
    }
    // Held until everything is in its place or undone.
    const WorkLock lock(installDir);
    if (!lock || !isUntouched(plan, installDir) ||
        !lock.makeFolders(attempt.stage, attempt.backup)) {
        return fail(error, "update_workdir_failed");
    }
    if (!fetchOrTidy(attempt, serverUrl, progress, error)) {
        return false;
    }

    Rollback rollback(attempt.files.size());
    fs::path launcher;
    if (!installFiles(attempt, rollback, launcher, error)) {
        return false;
    }
    if (!install::writeInstalledVersion(installDir, plan.manifest.version)) {
        return fail(error, "version_marker_write_failed");
    }
    rollback.commit();

    // The update helper moves a staged launcher; a caller who doesn't ask for it has no helper.
    const bool isHandedOver = stagedLauncher && !launcher.empty();
    if (isHandedOver) {
        *stagedLauncher = std::move(launcher);
    } else {
        system::removeFolder(attempt.stage);
    }
    return true;
}

bool Updater::confirmVersion(const UpdatePlan& plan) const {
    const WorkLock lock(installDir);
    return lock && isUntouched(plan, installDir) && !isDowngrade(installDir, plan) &&
           install::writeInstalledVersion(installDir, plan.manifest.version);
}

bool Updater::isCurrent(const UpdatePlan& plan) const {
    return !plan.lastAttempt || *plan.lastAttempt == findLastAttempt(installDir);
}

} // namespace ca::update
