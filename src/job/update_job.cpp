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

// What a failure that nobody expected leaves on the screen depends on how far the job was.
enum class Phase { Checking, Installing };

// One ending, written as one step. The player can click again afterwards.
void finish(Shared& shared, JobState jobState, std::string_view status, std::string_view detail) {
    changeShared(shared, [&](SharedSnapshot& state) {
        setTexts(state, jobState, status, detail);
        state.busy = false;
    });
}

void finishCheckFailed(Shared& shared, const std::string& error) {
    finish(shared, JobState::ServiceUnavailable, "UPDATE SERVICE UNAVAILABLE",
           error + " // ONLINE LOGIN STILL REQUIRED");
}

void finishApplyFailed(Shared& shared, const std::string& error) {
    finish(shared, JobState::Failed, "UPDATE FAILED - TRY AGAIN", error);
}

void finishUnexpectedly(Shared& shared, Phase phase, const char* token) {
    try {
        if (phase == Phase::Checking) {
            finishCheckFailed(shared, token);
        } else {
            finishApplyFailed(shared, token);
        }
    } catch (...) { // no memory even for the texts: the buttons must come back all the same
        changeShared(shared, [](SharedSnapshot& state) {
            state.jobState = JobState::Failed;
            state.busy = false;
        });
    }
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

// What the check found, for the screen.
void showComparison(Shared& shared, const Comparison& comparison, const UpdatePlan& plan) {
    auto notes = std::make_shared<const std::string>(plan.manifest.release_notes);
    changeShared(shared, [&](SharedSnapshot& state) {
        state.latestVersion = plan.manifest.version;
        state.patchNotes.swap(notes); // the old notes are freed after the lock
        state.updateAvailable = comparison.updateAvailable();
        state.updateRequired = comparison.updateRequired(plan.manifest);
        state.progressTotal = state.updateAvailable ? plan.totalBytes : 0;
    });
}

// Asks for the rights that the installation needs. True: this process may install. False: the job
// has ended.
bool mayInstall(const UpdateJob& job) {
    Shared& shared = *job.shared;
    if (job.elevated || isFolderWritable(job.installDir)) {
        return true;
    }
    changeShared(shared, [](SharedSnapshot& state) {
        setTexts(state, JobState::HandingOver, "WINDOWS PERMISSION REQUIRED",
                 "OPENING UAC TO INSTALL THE UPDATE...");
    });
    if (relaunchElevated()) {
        changeShared(shared, [](SharedSnapshot& state) { state.exitRequested = true; });
    } else {
        finish(shared, JobState::Failed, "UPDATE PERMISSION DENIED",
               "WINDOWS UAC WAS CANCELLED OR COULD NOT START");
    }
    return false;
}

void announceUpdate(const UpdateJob& job, const UpdatePlan& plan) {
    const char* headline = job.repair ? "REPAIRING GAME FILES..." : "DOWNLOADING UPDATE...";
    const std::string detail = std::to_string(plan.files.size()) + " FILES REQUIRE UPDATE";
    changeShared(*job.shared, [&](SharedSnapshot& state) {
        setTexts(state, JobState::Updating, headline, detail);
    });
}

update::ProgressCallback reportTo(Shared& shared) {
    return [&shared](std::uint64_t done, std::uint64_t total) {
        changeShared(shared, [&](SharedSnapshot& state) {
            state.progressDone = done;
            state.progressTotal = total;
        });
    };
}

// A new launcher waits in the stage folder; the update helper puts it in place once this process
// has ended.
void handOverToHelper(const UpdateJob& job, const std::filesystem::path& stagedLauncher) {
    // After a helper that gave up, the job that follows by itself starts no other: the two would
    // start each other without end. A player who asks again gets another try.
    const bool started = !job.handoverFailed &&
                         startUpdateHelper(job.installDir / install::helperFileName, stagedLauncher,
                                           job.installDir / install::launcherFileName);
    if (!started) {
        finish(*job.shared, JobState::Failed, "LAUNCHER SELF-UPDATE FAILED",
               "COULD NOT START UPDATE HELPER");
        return;
    }
    changeShared(*job.shared, [](SharedSnapshot& state) {
        state.exitRequested = true; // first: the helper waits, whatever becomes of the texts
        setTexts(state, JobState::HandingOver, "LAUNCHER UPDATED", "RESTARTING...");
    });
}

// The marker is the proof that an installation took effect, so it is read back.
void finishInstalled(const UpdateJob& job, const UpdatePlan& plan) {
    const std::string& version = plan.manifest.version;
    const std::string found = install::readInstalledVersion(job.installDir);
    changeShared(*job.shared, [&](SharedSnapshot& state) {
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
    });
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
    showComparison(shared, comparison, plan);
    if (comparison.updateAvailable()) {
        return true;
    }
    // What another launcher is just moving may look intact and be moved back again.
    if (comparison.order == 0 && !updater.isCurrent(plan)) {
        finishApplyFailed(shared, "update_workdir_failed");
        return false;
    }
    // From here on `updateAvailable` is false: showComparison has said so.
    const std::string& installed = comparison.installed;
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

void installPlan(const UpdateJob& job, const update::Updater& updater, const UpdatePlan& plan) {
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
        static_cast<void>(updater.confirmVersion(plan));
    }
    if (stagedLauncher.empty()) {
        finishInstalled(job, plan);
    } else {
        handOverToHelper(job, stagedLauncher);
    }
}

// One pass. `phase` says how far it was, for whoever catches what leaves it.
void checkAndInstall(const UpdateJob& job, Phase& phase) {
    update::Updater updater(job.installDir);
    const std::string server = install::readTextFile(install::updateServerFile(job.installDir));
    updater.serverUrl = install::trimText(server);
    UpdatePlan plan;
    if (findWork(job, updater, plan) && mayInstall(job)) {
        phase = Phase::Installing;
        installPlan(job, updater, plan);
    }
}

} // namespace

void runUpdateJob(const UpdateJob& job) {
    Phase phase = Phase::Checking;
    try {
        checkAndInstall(job, phase);
    } catch (const std::bad_alloc&) {
        finishUnexpectedly(*job.shared, phase, "out_of_memory");
    } catch (...) {
        finishUnexpectedly(*job.shared, phase, "unexpected_failure");
    }
}

} // namespace ca::job
