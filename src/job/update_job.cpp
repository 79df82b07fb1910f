#include "job/update_job.h"

#include "install/paths.h"
#include "install/text_file.h"
#include "install/version_marker.h"
#include "job/elevation.h"
#include "job/self_update.h"
#include "update/updater.h"
#include "update/version.h"

#include <new>

namespace ca::job {

namespace {

using update::compareVersions;
using update::UpdateManifest;
using update::UpdatePlan;

void setTexts(SharedSnapshot& state, JobState jobState, std::string status, std::string detail) {
    state.jobState = jobState;
    state.statusText = std::move(status);
    state.detailText = std::move(detail);
}

// One ending, written as one step. The player can click again afterwards.
void finish(Shared& shared, JobState jobState, std::string status, std::string detail) {
    const std::lock_guard lock(shared.mutex);
    setTexts(shared.state, jobState, std::move(status), std::move(detail));
    shared.state.busy = false;
}

void finishCheckFailed(Shared& shared, const std::string& error) {
    finish(shared, JobState::ServiceUnavailable, "UPDATE SERVICE UNAVAILABLE",
           error + " // ONLINE LOGIN STILL REQUIRED");
}

void finishApplyFailed(Shared& shared, const std::string& error) {
    finish(shared, JobState::Failed, "UPDATE FAILED - TRY AGAIN", error);
}

// How the installation stands to what the channel offers.
struct Comparison {
    std::string installed;
    int order = 0; // negative: the installation is older
    bool filesDiffer = false;

    Comparison(const std::filesystem::path& installDir, const UpdatePlan& plan)
        : installed(install::readInstalledVersion(installDir)),
          order(compareVersions(installed, plan.manifest.version)),
          filesDiffer(order == 0 && !plan.files.empty()) {}

    bool updateAvailable() const { return order < 0 || filesDiffer; }

    bool updateRequired(const UpdateManifest& manifest) const {
        if (!updateAvailable()) {
            return false;
        }
        return manifest.mandatory ||
               (!manifest.minimum_online_version.empty() &&
                compareVersions(installed, manifest.minimum_online_version) < 0);
    }
};

void publish(Shared& shared, const Comparison& comparison, const UpdatePlan& plan) {
    auto notes = std::make_shared<const std::string>(plan.manifest.release_notes);
    const std::lock_guard lock(shared.mutex);
    SharedSnapshot& state = shared.state;
    state.latestVersion = plan.manifest.version;
    state.patchNotes.swap(notes); // the old notes are freed after the lock
    state.updateAvailable = comparison.updateAvailable();
    state.updateRequired = comparison.updateRequired(plan.manifest);
    state.progressTotal = state.updateAvailable ? plan.totalBytes : 0;
}

// Asks for the rights that the installation needs. True: this process may install.
// False: the job has ended.
bool mayInstall(const UpdateJob& job) {
    Shared& shared = *job.shared;
    if (job.elevated || isFolderWritable(job.installDir)) {
        return true;
    }
    {
        const std::lock_guard lock(shared.mutex);
        setTexts(shared.state, JobState::HandingOver, "WINDOWS PERMISSION REQUIRED",
                 "OPENING UAC TO INSTALL THE UPDATE...");
    }
    if (relaunchElevated()) {
        const std::lock_guard lock(shared.mutex);
        shared.state.exitRequested = true;
    } else {
        finish(shared, JobState::Failed, "UPDATE PERMISSION DENIED",
               "WINDOWS UAC WAS CANCELLED OR COULD NOT START");
    }
    return false;
}

void announceUpdate(const UpdateJob& job, const UpdatePlan& plan) {
    const std::lock_guard lock(job.shared->mutex);
    setTexts(job.shared->state, JobState::Updating,
             job.repair ? "REPAIRING GAME FILES..." : "DOWNLOADING UPDATE...",
             std::to_string(plan.files.size()) + " FILES REQUIRE UPDATE");
}

update::ProgressCallback reportTo(Shared& shared) {
    return [&shared](std::uint64_t done, std::uint64_t total) {
        const std::lock_guard lock(shared.mutex);
        shared.state.progressDone = done;
        shared.state.progressTotal = total;
    };
}

// A new launcher waits in the stage folder; the update helper puts it in place once
// this process has ended.
void handOverToHelper(const UpdateJob& job, const std::filesystem::path& stagedLauncher) {
    const bool started = startUpdateHelper(job.installDir / install::helperFileName, stagedLauncher,
                                           job.installDir / install::launcherFileName);
    if (!started) {
        finish(*job.shared, JobState::Failed, "LAUNCHER SELF-UPDATE FAILED",
               "COULD NOT START UPDATE HELPER");
        return;
    }
    const std::lock_guard lock(job.shared->mutex);
    // first: the helper waits, whatever becomes of the texts
    job.shared->state.exitRequested = true;
    setTexts(job.shared->state, JobState::HandingOver, "LAUNCHER UPDATED", "RESTARTING...");
}

// The marker is the proof that an installation took effect, so it is read back.
void finishInstalled(const UpdateJob& job, const UpdatePlan& plan) {
    const std::string& version = plan.manifest.version;
    const std::string found = install::readInstalledVersion(job.installDir);
    const std::lock_guard lock(job.shared->mutex);
    SharedSnapshot& state = job.shared->state;
    if (compareVersions(found, version) != 0) {
        setTexts(state, JobState::Failed, "VERSION MARKER UPDATE FAILED",
                 "EXPECTED " + version + " // FOUND " + found);
        state.updateAvailable = true;
    } else {
        setTexts(state, JobState::Ready, "READY TO PLAY", "INSTALLED VERSION " + found);
        state.latestVersion = version;
        state.updateAvailable = false;
        state.updateRequired = false;
        state.progressDone = state.progressTotal;
    }
    state.busy = false;
}

// True: `plan` holds work. False: the job has ended.
bool findWork(const UpdateJob& job, const update::Updater& updater, UpdatePlan& plan) {
    Shared& shared = *job.shared;
    std::string error;
    if (!updater.check(job.channel, plan, error)) {
        finishCheckFailed(shared, error);
        return false;
    }
    const Comparison comparison(job.installDir, plan);
    const std::string& installed = comparison.installed;
    publish(shared, comparison, plan);
    if (comparison.updateAvailable()) {
        return true;
    }
    // From here on `updateAvailable` is false: publish has said so.
    if (comparison.order > 0) {
        finish(shared, JobState::Ready, "READY TO PLAY",
               "INSTALLED " + installed + " // SERVER " + plan.manifest.version +
                   " // DOWNGRADE BLOCKED");
    } else {
        finish(shared, JobState::Ready, "READY TO PLAY",
               "VERSION " + installed + " // " + job.channel);
    }
    return false;
}

void install(const UpdateJob& job, const update::Updater& updater, const UpdatePlan& plan) {
    announceUpdate(job, plan);
    std::string error;
    std::filesystem::path stagedLauncher;
    if (!updater.apply(plan, reportTo(*job.shared), error, &stagedLauncher)) {
        finishApplyFailed(*job.shared, error);
        return;
    }
    // Every file was intact and only the marker is behind: nothing else would ever bring it up to
    // date. A failure shows when the marker is read back.
    if (plan.files.empty()) {
        static_cast<void>(install::writeInstalledVersion(job.installDir, plan.manifest.version));
    }
    if (stagedLauncher.empty()) {
        finishInstalled(job, plan);
    } else {
        handOverToHelper(job, stagedLauncher);
    }
}

} // namespace

void runUpdateJob(const UpdateJob& job) {
    Shared& shared = *job.shared;
    bool installing = false;
    const auto failWith = [&](const char* token) {
        try {
            installing ? finishApplyFailed(shared, token) : finishCheckFailed(shared, token);
        } catch (...) { // no memory even for the texts: the buttons must come back all the same
            const std::lock_guard lock(shared.mutex);
            shared.state.jobState = JobState::Failed;
            shared.state.busy = false;
        }
    };
    try {
        update::Updater updater(job.installDir);
        updater.serverUrl =
            install::trimText(install::readTextFile(install::updateServerFile(job.installDir)));
        UpdatePlan plan;
        if (!findWork(job, updater, plan) || !mayInstall(job)) {
            return;
        }
        installing = true;
        install(job, updater, plan);
    } catch (const std::bad_alloc&) {
        failWith("out_of_memory");
    } catch (...) {
        failWith("unexpected_failure");
    }
}

} // namespace ca::job
