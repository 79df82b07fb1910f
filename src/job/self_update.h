// The hand-over of a staged launcher to the update helper.
#pragma once

#include <filesystem>

namespace ca::job {

// Starts `helper` (absolute paths, all three), which waits for this process to end, puts
// `stagedLauncher` in the place of `target` and starts it. True when the helper's process has been
// made; what it does then isn't observed. False also in a process that a helper has started because
// it couldn't do that. Any thread.
bool startUpdateHelper(const std::filesystem::path& helper,
                       const std::filesystem::path& stagedLauncher,
                       const std::filesystem::path& target);

} // namespace ca::job
