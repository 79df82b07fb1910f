#include "launcher/frame_loop.h"

#include "job/begin_update_job.h"
#include "launcher/game.h"
#include "launcher/layout.h"
#include "launcher/screen.h"
#include "system/file_kind.h"
#include "system/path.h"

namespace ca::launcher {

namespace {

// The one thing that the main thread itself writes into the record, apart from the start of a job.
void reportMissingGame(job::Shared& shared, const std::filesystem::path& exePath) {
    const std::string path = system::utf8FromPath(exePath);
    job::changeShared(shared, [&](job::SharedSnapshot& state) {
        setTexts(state, job::JobState::Failed, "GAME EXECUTABLE MISSING", path);
    });
}

// True when the game has been started and the launcher's work is done. A file that is missing and
// one that can't be started read the same: for the player both mean a repair.
bool play(const LauncherState& launcher) {
    const std::filesystem::path exePath = launcher.installDir / gameExecutableName();
    if (system::pathExists(exePath) && startGame(exePath)) {
        return true;
    }
    reportMissingGame(*launcher.shared, exePath);
    return false;
}

void beginJob(const LauncherState& launcher, bool repair) {
    job::beginUpdateJob(*launcher.shared, launcher.installDir, launcher.channel, repair,
                        launcher.elevatedUpdate);
}

// Both handlers decide on a fresh snapshot, not on the one that was drawn. True when the
// game has been started.
bool handleClick(const LauncherState& launcher, float x, float y) {
    const job::SharedSnapshot snapshot = snapshotShared(*launcher.shared);
    if (snapshot.busy) {
        return false;
    }
    if (contains(mainButton, x, y) && !snapshot.updateRequired) {
        return play(launcher);
    }
    if (contains(repairButton, x, y)) {
        beginJob(launcher, true);
    } else if (contains(refreshButton, x, y)) {
        beginJob(launcher, false);
    }
    return false;
}

bool handleEnter(const LauncherState& launcher) {
    const job::SharedSnapshot snapshot = snapshotShared(*launcher.shared);
    return !snapshot.busy && !snapshot.updateRequired && play(launcher);
}

// Handles every waiting event; one behind a quit event still counts. False when
// the launcher is to end.
bool drainEvents(const LauncherState& launcher) {
    bool running = true;
    // a second click or key press in the same frame doesn't start a second game
    bool played = false;
    SDL_Event event{};
    while (SDL_PollEvent(&event)) {
        // A click's place in the drawing, whatever the window's size is.
        SDL_ConvertEventToRenderCoordinates(launcher.renderer, &event);
        if (event.type == SDL_EVENT_QUIT) {
            running = false;
        } else if (played) {
            continue;
        } else if (event.type == SDL_EVENT_MOUSE_BUTTON_DOWN &&
                   event.button.button == SDL_BUTTON_LEFT) {
            played = handleClick(launcher, event.button.x, event.button.y);
        } else if (event.type == SDL_EVENT_KEY_DOWN && event.key.scancode == SDL_SCANCODE_RETURN) {
            played = handleEnter(launcher);
        }
    }
    return running && !played;
}

} // namespace

void runFrameLoop(LauncherState& launcher) {
    for (bool running = true; running;) {
        running = drainEvents(launcher);
        const job::SharedSnapshot snapshot = snapshotShared(*launcher.shared);
        if (snapshot.exitRequested) {
            running = false;
        }
        drawScreen(launcher.renderer, launcher.installDir, snapshot, launcher.localPatchNotes);
    }
}

} // namespace ca::launcher
