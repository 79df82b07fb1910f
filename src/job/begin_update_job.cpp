#include "job/begin_update_job.h"

#include "job/self_update.h"
#include "job/update_job.h"

#include <exception>
#include <thread>

namespace ca::job {

namespace {

// Test and set under one hold of the lock, so that two callers can't both start a job.
bool claimJob(Shared& shared, bool repair) {
    bool claimed = false;
    changeShared(shared, [&](SharedSnapshot& state) {
        if (state.busy) {
            return;
        }
        const char* headline = repair ? "CHECKING GAME FILES..." : "CHECKING FOR UPDATES...";
        setTexts(state, JobState::Checking, headline, "");
        state.progressDone = 0;
        state.progressTotal = 0;
        state.busy = true; // last, because the texts may find no memory
        claimed = true;
    });
    return claimed;
}

// Held while a job's thread is started and detached; the thread waits for that. MinGW-w64's threads
// library forgets the record from which a new thread learns what to run as soon as it is detached:
// about one thread in 10,000 was detached before it had looked, and then ran nothing or crashed.
std::mutex starting;

void startDetached(UpdateJob job) {
    const std::lock_guard lock(starting);
    std::thread([job = std::move(job)] {
        { const std::lock_guard detached(starting); }
        runUpdateJob(job);
    }).detach();
}

} // namespace

void beginUpdateJob(Shared& shared, const std::filesystem::path& installDir,
                    const std::string& channel, bool repair, bool elevated) {
    if (!claimJob(shared, repair)) {
        return;
    }
    // Before the thread begins, which reads the environment too.
    const bool handoverFailed = takeHandoverFailed();
    try {
        startDetached(UpdateJob{&shared, installDir, channel, repair, elevated, handoverFailed});
    } catch (const std::exception&) { // no thread, or no memory for one
        changeShared(shared, [](SharedSnapshot& state) {
            state.busy = false; // first, because the texts may find no memory
            setTexts(state, JobState::Failed, "UPDATE FAILED - TRY AGAIN", "job_thread_failed");
        });
    }
}

} // namespace ca::job
