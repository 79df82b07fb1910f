// The loop that runs until the launcher ends: events, one snapshot, one frame.
#pragma once

#include "job/shared.h"

#include <SDL3/SDL.h>
#include <filesystem>
#include <string>

namespace ca::launcher {

// What main keeps from start-up to shutdown. Belongs to the main thread; `shared` is the record
// that the job writes too.
struct LauncherState {
    bool elevatedUpdate = false; // started through the elevation prompt
    SDL_Window* window = nullptr;
    SDL_Renderer* renderer = nullptr;
    std::filesystem::path installDir;
    std::string channel;
    job::Shared* shared = nullptr;
    std::string localPatchNotes; // set once at start-up
};

// Runs until the window is closed, the game has been started or another process takes over, and
// draws one more frame then. Once the game has been started, clicks and keys that still wait are
// dropped: a double click starts one game. Paced by the display's refresh alone; never waits for
// the network. Main thread.
void runFrameLoop(LauncherState& launcher);

} // namespace ca::launcher
