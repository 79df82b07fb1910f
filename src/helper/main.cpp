// ColdAnchorUpdateHelper.exe: waits for the launcher to end, puts the new one in its place and
// starts it. No window, no console. Exit statuses: helper/exit_status.h.

#include "helper/arguments.h"
#include "helper/file_steps.h"
#include "helper/wait.h"
#include "install/folders.h"
#include "install/paths.h"

using namespace ca::helper;

namespace {

ExitStatus replaceLauncher(const Arguments& arguments) {
    // with its separator in front
    const std::wstring name = arguments.target.substr(arguments.folder.size());
    const std::wstring old = arguments.backup + name;
    // A player may have renamed the launcher that is running: then its place is empty.
    if (!isMissing(arguments.target) && !keepAside(arguments.target, arguments.backup, name)) {
        return exitNotKept;
    }
    if (!flushToDisk(arguments.staged) || !moveOver(arguments.staged, arguments.target)) {
        return exitNotReplaced;
    }
    if (start(arguments.target, arguments.folder)) {
        return exitReplaced;
    }
    return moveOver(old, arguments.target) ? exitNewDoesNotStart : exitNothingStarts;
}

} // namespace

int main() {
    Arguments arguments;
    if (const ExitStatus status = readArguments(arguments); status != exitReplaced) {
        return status;
    }
    if (!waitForEnd(arguments.processId, longestWait)) {
        return exitLauncherStillRuns;
    }
    // Whoever may write here has had the time to put a link in.
    if (const ExitStatus status = readArguments(arguments); status != exitReplaced) {
        return status;
    }
    ExitStatus status = isProgram(arguments.staged) ? replaceLauncher(arguments) : exitNotAProgram;
    if (status != exitReplaced) {
        // Whatever went wrong, the target is a whole launcher: the player gets it back.
        ::SetEnvironmentVariableW(ca::install::selfUpdateFailedVariable, L"1");
        if (!start(arguments.target, arguments.folder)) {
            status = exitNothingStarts;
        }
    }
    if (!ca::install::isLink(arguments.work)) {
        // also after a failure: nothing of it is ever used again
        ca::install::removeFolder(arguments.stage);
    }
    return status;
}
