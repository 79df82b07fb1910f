// The start of the update job.
#pragma once

#include "job/shared.h"

#include <filesystem>
#include <string>

namespace ca::job {

// Starts the update job on a detached thread of its own; a call while `busy` is dropped. `shared`
// must stay valid until the process ends, since the job is neither told nor awaited when the window
// closes. `repair` changes two headlines and nothing else; `elevated` says that this process came
// through the elevation prompt. The outcome is what the job writes into `shared`; a thread that
// can't be started reads "UPDATE FAILED - TRY AGAIN" and "job_thread_failed". Any thread.
void beginUpdateJob(Shared& shared, const std::filesystem::path& installDir,
                    const std::string& channel, bool repair, bool elevated);

} // namespace ca::job
