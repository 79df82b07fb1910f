// The hand-over of a staged launcher to the update helper.
#pragma once

#include <filesystem>

namespace ca::job {

// Starts `helper` (absolute paths, all three), which waits for this process to end, puts
// `stagedLauncher` in the place of `target` and starts it. True when the helper's process has been
// made; what it does then isn't observed. Any thread.
bool startUpdateHelper(const std::filesystem::path& helper,
                       const std::filesystem::path& stagedLauncher,
                       const std::filesystem::path& target);

// Whether the update helper has started this process because it couldn't replace the launcher.
// True once at the most: the sign is taken out of the environment, so that neither a later job nor
// the game sees it. Changes the environment, which no other thread may read meanwhile.
bool takeHandoverFailed();

} // namespace ca::job
