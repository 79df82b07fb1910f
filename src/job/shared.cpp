#include "job/shared.h"

#include "job/update_job.h"

#include <exception>
#include <thread>

namespace ca::job {

SharedSnapshot snapshotShared(Shared& shared) {
    const std::lock_guard lock(shared.mutex);
    return shared.state;
}

namespace {

// Test and set under one hold of the lock, so that two callers can't both start a job.
bool claimJob(Shared& shared, bool repair) {
    const std::lock_guard lock(shared.mutex);
    SharedSnapshot& state = shared.state;
    if (state.busy)
        return false;
    state.jobState = JobState::Checking;
    state.statusText = repair ? "CHECKING GAME FILES..." : "CHECKING FOR UPDATES...";
    state.detailText.clear();
    state.progressDone = 0;
    state.progressTotal = 0;
    state.busy = true; // last, because an assignment above may find no memory
    return true;
}

} // namespace

void beginUpdateJob(Shared& shared, const std::filesystem::path& installDir, const std::string& channel, bool repair,
                    bool elevated) {
    if (!claimJob(shared, repair))
        return;
    try {
        std::thread(runUpdateJob, UpdateJob{&shared, installDir, channel, repair, elevated}).detach();
    } catch (const std::exception&) { // no thread, or no memory for one
        const std::lock_guard lock(shared.mutex);
        shared.state.busy = false;
        shared.state.jobState = JobState::Failed;
        shared.state.statusText = "UPDATE FAILED - TRY AGAIN";
        shared.state.detailText = "job_thread_failed";
    }
}

} // namespace ca::job
