// The player's save and settings files live in a folder of the player's own,
// outside the installation.
#pragma once

#include <filesystem>

namespace ca::install {

// "%LOCALAPPDATA%\ColdAnchor", else "%APPDATA%\ColdAnchor", else "userdata" in the installation. An
// empty variable counts as none; the value isn't checked. Touches no disk; any thread.
std::filesystem::path userDataDir();
// Its folder "saves", where the game keeps the player's files.
std::filesystem::path savesDir();

// Copies "profile_v07.sav" and "settings_v01.cfg" from the installation's folder "save" to
// `savesDir`, each only if nothing stands there yet. Reports nothing: what fails leaves
// things as they are and is tried again at the next start. Blocks on the disk; main
// thread, before the first job.
void migrateUserData();

} // namespace ca::install
