#include "install/folders.h"
#include "install/paths.h"
#include "install/text_file.h"
#include "install/version_marker.h"
#include "net/download.h"
#include "update/channel.h"
#include "update/digest.h"
#include "update/manifest_path.h"
#include "update/rollback.h"
#include "update/updater.h"
#include "update/version.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <windows.h>

namespace ca::update {

namespace fs = std::filesystem;

namespace {

bool fail(std::string& error, std::string_view token, std::string_view detail = {}) {
    error = token;
    error += detail;
    return false;
}

// The files of a plan, each path once. A path that is named again with the same digest is the same
// file; with another digest no installation could satisfy both.
bool distinctFiles(const UpdatePlan& plan, std::vector<const ManifestFile*>& files,
                   std::string& error) {
    std::map<std::string, const ManifestFile*> seen;
    for (const PlanFile& planFile : plan.files) {
        const ManifestFile& file = planFile.file;
        const auto [entry, isNew] = seen.try_emplace(genericManifestPath(file.path), &file);
        if (isNew) {
            files.push_back(&file);
        } else if (entry->second->sha256 != file.sha256) {
            return fail(error, "update_duplicate_path:", file.path);
        }
    }
    return true;
}

// The folders of one call. Both lie inside the installation, so that every move is a rename on one
// volume, and bear the time in their names, so that nothing of an earlier attempt is ever reused.
struct WorkFolders {
    fs::path stage;
    fs::path backup;

    explicit WorkFolders(const fs::path& installDir) {
        using namespace std::chrono;
        const auto stamp =
            duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
        const fs::path work = installDir / install::workFolderName;
        stage = work / ("stage-" + std::to_string(stamp));
        backup = work / ("backup-" + std::to_string(stamp));
    }

    bool make() const {
        return install::makeFolders(install::systemPath(stage)) &&
               install::makeFolders(install::systemPath(backup));
    }

    void removeStage() const {
        // Its files have longer paths than the installation's. A stage folder that stays costs
        // space and nothing else.
        install::removeFolder(
            install::withoutLimit(install::wideFromPath(fs::path(stage).make_preferred())));
    }
};

// Downloads every file into the stage folder and checks its digest. Touches
// nothing of the installation.
bool fetch(const UpdatePlan& plan, const std::vector<const ManifestFile*>& files,
           const std::string& serverUrl, const fs::path& stage, const ProgressCallback& progress,
           std::string& error) {
    const std::string address =
        channelUrl(serverUrl, plan.manifest.channel, plan.manifest.platform);
    std::uint64_t completedBytes = 0;
    for (const ManifestFile* file : files) {
        const fs::path staged = stage / relativePath(file->path);
        const std::string url = fileUrl(address, file->path);
        std::uint64_t currentBytes = 0;
        const auto report = [&](std::uint64_t done, std::uint64_t) {
            currentBytes = done;
            if (progress) {
                progress(completedBytes + done, plan.totalBytes);
            }
        };
        if (!net::downloadToFile(url, staged, report, error)) {
            return false;
        }
        if (sha256File(staged) != file->sha256) {
            return fail(error, "download_hash_mismatch:", file->path);
        }
        completedBytes += std::max(file->size, currentBytes);
        if (progress) {
            progress(std::min(completedBytes, plan.totalBytes), plan.totalBytes);
        }
    }
    return true;
}

bool move(const fs::path& from, const fs::path& to, DWORD flags) {
    return ::MoveFileExW(install::systemPath(from).c_str(), install::systemPath(to).c_str(),
                         flags) != 0;
}

// Moves one staged file into place and its predecessor into the backup folder.
bool installFile(const ManifestFile& file, const fs::path& installDir, const WorkFolders& folders,
                 Rollback& rollback, std::string& error) {
    const fs::path relative = relativePath(file.path);
    RollbackEntry entry{installDir / relative, {}};
    const fs::path target = entry.target;
    // once, as soon as there is something to undo
    const auto record = [&] { rollback.add(std::move(entry)); };
    if (!install::makeFolders(install::systemPath(target.parent_path()))) {
        return fail(error, "update_destination_failed:", file.path);
    }

    const bool replaces = install::pathExists(target);
    if (replaces) {
        entry.backup = folders.backup / relative;
        // a failure shows in the rename
        install::makeFolders(install::systemPath(entry.backup.parent_path()));
        // A backup is never overwritten: where two names mean one file, the first
        // backup is the player's.
        if (!move(target, entry.backup, 0)) {
            return fail(error, "update_backup_failed:", file.path);
        }
        record();
    }
    if (!move(folders.stage / relative, target, MOVEFILE_REPLACE_EXISTING)) {
        return fail(error, "update_install_failed:", file.path);
    }
    if (!replaces) {
        record();
    }
    return true;
}

} // namespace

bool Updater::apply(const UpdatePlan& plan, const ProgressCallback& progress, std::string& error,
                    fs::path* stagedLauncher) const {
    if (stagedLauncher) {
        stagedLauncher->clear();
    }
    // The raw marker: an installation without one may be given any version.
    const std::string marker = install::readTextFile(install::versionMarkerFile(installDir));
    if (!marker.empty() && compareVersions(marker, plan.manifest.version) > 0) {
        return fail(error, "update_downgrade_blocked:", plan.manifest.version);
    }
    if (plan.files.empty()) {
        return true;
    }

    std::vector<const ManifestFile*> files;
    if (!distinctFiles(plan, files, error)) {
        return false;
    }
    const WorkFolders folders(installDir);
    if (!folders.make()) {
        return fail(error, "update_workdir_failed");
    }
    try {
        if (!fetch(plan, files, serverUrl, folders.stage, progress, error)) {
            folders.removeStage();
            return false;
        }
    } catch (...) {
        folders.removeStage();
        throw;
    }

    Rollback rollback(files.size());
    bool launcherStaged = false;
    for (const ManifestFile* file : files) {
        const fs::path relative = relativePath(file->path);
        if (relative.filename() == install::launcherFileName) {
            if (stagedLauncher) {
                *stagedLauncher = folders.stage / relative;
                launcherStaged = true;
            }
        } else if (!installFile(*file, installDir, folders, rollback, error)) {
            return false;
        }
    }
    if (!install::writeInstalledVersion(installDir, plan.manifest.version)) {
        return fail(error, "version_marker_write_failed");
    }
    rollback.commit();
    if (!launcherStaged) {
        folders.removeStage();
    }
    return true;
}

} // namespace ca::update
