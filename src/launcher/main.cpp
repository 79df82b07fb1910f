// ColdAnchorLauncher.exe. Exit status 0 when the frame loop ended, 1 to 3 when SDL, the window
// or the renderer failed.

#include "install/paths.h"
#include "install/user_data.h"
#include "job/begin_update_job.h"
#include "job/elevation.h"
#include "launcher/environment.h"
#include "launcher/frame_loop.h"
#include "launcher/notes.h"
#include "launcher/window.h"
#include "update/channel.h"

#include <SDL3/SDL_main.h>
#include <algorithm>
#include <string_view>

using namespace ca;

namespace {

// Matched whole, wherever it is among the arguments; all others are ignored.
bool hasOption(int argc, char** argv, std::string_view option) {
    char** const first = argv + std::min(argc, 1); // behind the program's name, if there is one
    char** const end = argv + argc;
    return std::find(first, end, option) != end;
}

} // namespace

int main(int argc, char* argv[]) {
    launcher::removeOrders();
    launcher::LauncherState launcher;
    launcher.elevatedUpdate = hasOption(argc, argv, job::elevatedOption);
    const auto opened = launcher::openWindow(launcher.window, launcher.renderer);
    if (opened != launcher::exitSuccess) {
        return opened;
    }

    launcher.installDir = install::executableDir();
    launcher::setWindowIcon(launcher.window, install::iconFile(launcher.installDir));
    install::migrateUserData();

    // Never destroyed: a job that is still running when the window closes writes into it
    // until the process is gone.
    static job::Shared& shared = *new job::Shared;
    launcher.shared = &shared;
    launcher.channel = update::launcherChannel;
    job::beginUpdateJob(shared, launcher.installDir, launcher.channel, false,
                        launcher.elevatedUpdate);
    // The job works meanwhile.
    launcher.localPatchNotes = launcher::loadLocalPatchNotes(launcher.installDir);

    launcher::runFrameLoop(launcher);

    launcher::closeWindow(launcher.window, launcher.renderer);
    return launcher::exitSuccess;
}
