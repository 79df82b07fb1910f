// ColdAnchorUpdateHelper.exe: waits for the launcher to end, puts the new one in its place and
// starts it. No window, no console. Exit statuses: helper/exit_status.h.

#include "helper/arguments.h"
#include "helper/file_steps.h"
#include "helper/wait.h"
#include "install/handover.h"
#include "system/files.h"
#include "system/folders.h"

using namespace ca::helper;

namespace {

// A scanner is done with a launcher long before. The player sees nothing meanwhile.
constexpr ca::system::RetryTimes times{.limit = 30 * 1000, .firstPause = 50, .longestPause = 2000};

ExitStatus replaceLauncher(const Arguments& arguments, const ca::system::Patience& patience) {
    const std::wstring old = arguments.backup + arguments.name;
    // A player may have renamed the launcher that is running: then its place is empty.
    if (!ca::system::isMissing(arguments.target) &&
        !keepAside(arguments.target, arguments.backup, arguments.name, patience)) {
        return exitNotKept;
    }
    if (!flushToDisk(arguments.staged, patience) ||
        !moveOver(arguments.staged, arguments.target, patience)) {
        return exitNotReplaced;
    }
    if (start(arguments.target, patience)) {
        return exitReplaced;
    }
    return moveOver(old, arguments.target, patience) ? exitNewDoesNotStart : exitNothingStarts;
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
    const ca::system::Patience patience(times);
    ExitStatus status = isProgram(arguments.staged, patience) ? replaceLauncher(arguments, patience)
                                                              : exitNotAProgram;
    if (status != exitReplaced) {
        // Whatever went wrong, the target is a whole launcher: the player gets it back.
        ::SetEnvironmentVariableW(ca::install::handoverFailedVariable,
                                  ca::install::handoverFailedValue);
        if (!start(arguments.target, patience)) {
            status = exitNothingStarts;
        }
    }
    // Also after a failure: nothing of it is ever used again.
    if (!ca::system::isLink(arguments.work)) {
        ca::system::removeFolder(arguments.stage);
    }
    return status;
}
