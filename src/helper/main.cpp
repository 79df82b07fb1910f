// ColdAnchorUpdateHelper.exe: waits for the launcher to end, puts the new one in its place and starts it. No window, no
// console. Exit statuses: helper/exit_status.h.

#include "helper/arguments.h"
#include "helper/file_steps.h"
#include "helper/wait.h"

using namespace ca::helper;

namespace {

ExitStatus replaceLauncher(const Arguments& arguments) {
    const std::wstring name = arguments.target.substr(arguments.folder.size()); // with its separator in front
    const std::wstring old = arguments.backup + name;
    // A player may have renamed the launcher that is running: then its place is empty.
    if (!isMissing(arguments.target) && !keepAside(arguments.target, arguments.backup, name))
        return exitNotKept;
    if (!moveOver(arguments.staged, arguments.target))
        return exitNotReplaced;
    if (start(arguments.target, arguments.folder)) {
        removeFolder(arguments.stage);
        return exitReplaced;
    }
    return moveOver(old, arguments.target) ? exitNewDoesNotStart : exitNothingStarts;
}

} // namespace

int main() {
    Arguments arguments;
    if (const ExitStatus status = readArguments(arguments); status != exitReplaced)
        return status;
    if (!waitForEnd(arguments.processId, longestWait))
        return exitLauncherStillRuns;
    const ExitStatus status = isProgram(arguments.staged) ? replaceLauncher(arguments) : exitNotAProgram;
    if (status == exitReplaced)
        return status;
    // Whatever went wrong, the target is a whole launcher: the player gets it back.
    return start(arguments.target, arguments.folder) ? status : exitNothingStarts;
}
