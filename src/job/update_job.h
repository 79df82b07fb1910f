// The update job: one straight pass that asks the channel, compares, installs what is needed
// and writes how it ended.
#pragma once

#include "job/shared.h"

#include <filesystem>
#include <string>

namespace ca::job {

// What a job's thread owns. `shared` outlives the process's threads; the rest are copies.
struct UpdateJob {
    Shared* shared;
    std::filesystem::path installDir;
    std::string channel;
    bool repair;
    bool elevated;
    bool handoverFailed; // the update helper has just given up: this job hands over no launcher
};

// The body of the job's thread; beginUpdateJob has set `busy`. It tries nothing twice, looks at no
// stop flag, and no exception leaves it. Its last access to `shared` writes the ending and, unless
// another process takes over, clears `busy`.
void runUpdateJob(const UpdateJob& job);

} // namespace ca::job
