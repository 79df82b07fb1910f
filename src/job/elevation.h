// Higher rights: finding out whether they are needed, and asking for them.
#pragma once

#include <filesystem>

namespace ca::job {

// The launcher's one command line option: this process came through the elevation prompt.
inline constexpr const char* elevatedOption = "--elevated-update";

// Whether a new file can be made in the folder: one is made and vanishes again. Any failure counts
// as no, so a full disk has the same effect as missing rights. Blocks on the disk; any thread.
bool isFolderWritable(const std::filesystem::path& folder);

// Starts a second copy of this executable, with `elevatedOption` alone, through the system's
// elevation prompt. True when that copy has been started; false when the prompt was refused or the
// start failed. Blocks while the prompt is open.
bool relaunchElevated();

} // namespace ca::job
