// ColdAnchorLauncher.exe. Exit status 0 when the frame loop ended, 1 to 3 when SDL, the window
// or the renderer failed.

#include "install/paths.h"
#include "install/user_data.h"
#include "job/begin_update_job.h"
#include "job/elevation.h"
#include "launcher/frame_loop.h"
#include "launcher/notes.h"
#include "launcher/window.h"
#include "update/channel.h"

#include <SDL3/SDL_main.h>
#include <algorithm>
#include <string_view>

using namespace ca;

int main(int argc, char* argv[]) {
    launcher::LauncherState launcher;
    launcher.elevatedUpdate = std::find(argv + std::min(argc, 1), argv + argc,
                                        std::string_view(job::elevatedOption)) != argv + argc;
    if (const auto status = launcher::openWindow(launcher.window, launcher.renderer);
        status != launcher::exitSuccess) {
        return status;
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
    launcher.localPatchNotes = launcher::loadLocalPatchNotes(launcher.installDir);

    launcher::runFrameLoop(launcher);

    launcher::closeWindow(launcher.window, launcher.renderer);
    return launcher::exitSuccess;
}
