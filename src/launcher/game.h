// The game: a program of its own in the installation.
#pragma once

#include <filesystem>
#include <string>

namespace ca::launcher {

// The file name of the game's executable, without a folder.
std::string gameExecutableName();

// Starts the game in its own folder, with no arguments. True when its process has been made;
// the launcher keeps nothing of it. A missing file is false like any other failure. Main
// thread; returns at once.
bool startGame(const std::filesystem::path& exePath);

} // namespace ca::launcher
