// ColdAnchorUpdateHelper.exe: waits for the launcher to end, puts the new one in its place and
// starts it. No window, no console. Exit statuses: helper/exit_status.h.

#include "helper/arguments.h"
#include "helper/file_steps.h"
#include "helper/wait.h"
#include "install/handover.h"
#include "system/executable_name.h"
#include "system/files.h"
#include "system/folders.h"

using namespace ca::helper;

namespace {

// A scanner is done with a launcher long before. The player sees nothing meanwhile.
constexpr ca::system::RetryTimes times{.limit = 30 * 1000, .firstPause = 50, .longestPause = 2000};

// Of the first tries to replace the launcher, before it counts as held for good.
constexpr ca::system::RetryTimes scannerTimes{
    .limit = 5 * 1000, .firstPause = 50, .longestPause = 500};

// Puts the old launcher back. Its bytes are in the backup folder twice, under its own name too; a
// copy gets the launcher's name once it is whole.
void putBack(const Arguments& arguments, const std::wstring& aside) {
    const ca::system::Patience patience(times);
    if (moveOver(aside, arguments.target, patience)) {
        return;
    }
    const std::wstring copy = arguments.target + L".new";
    if (ca::system::copyFile(arguments.backup + arguments.name, copy) &&
        flushToDisk(copy, patience)) {
        moveOver(copy, arguments.target, patience); // else nothing starts, and the status says so
    }
}

// Where another launcher's window keeps the program busy, it can't be replaced. A running program
// can be renamed, though: the old one moves aside, and back if the new one doesn't get its place.
// The new one is renamed first, so that the place isn't left for a file that somebody holds.
bool moveInBeside(const Arguments& arguments, const ca::system::Patience& patience) {
    const std::wstring ready = arguments.staged + L".ready";
    const std::wstring aside = arguments.backup + arguments.name + L".running";
    if (!moveOver(arguments.staged, ready, patience) ||
        !patience.retry([&] { return ca::system::moveFile(arguments.target, aside); })) {
        return false;
    }
    if (moveOver(ready, arguments.target, ca::system::Patience(scannerTimes))) {
        return true;
    }
    putBack(arguments, aside);
    return false;
}

bool moveIn(const Arguments& arguments, const ca::system::Patience& patience) {
    if (ca::system::isMissing(arguments.target)) {
        return moveOver(arguments.staged, arguments.target, patience);
    }
    if (moveOver(arguments.staged, arguments.target, ca::system::Patience(scannerTimes))) {
        return true;
    }
    // On a disk that fails otherwise, moving the launcher aside would only make it worse.
    return ca::system::isTransient(::GetLastError()) && moveInBeside(arguments, patience);
}

ExitStatus replaceLauncher(const Arguments& arguments, const ca::system::Patience& patience) {
    const std::wstring old = arguments.backup + arguments.name;
    // A player may have renamed the launcher that is running: then its place is empty.
    if (!ca::system::isMissing(arguments.target) &&
        !keepAside(arguments.target, arguments.backup, arguments.name, patience)) {
        return exitNotKept;
    }
    if (!flushToDisk(arguments.staged, patience) || !moveIn(arguments, patience)) {
        return exitNotReplaced;
    }
    // The patience may be used up, and what scans a new program does so now.
    const ca::system::Patience scanner(scannerTimes);
    if (start(arguments.target, scanner)) {
        return exitReplaced;
    }
    return moveOver(old, arguments.target, scanner) ? exitNewDoesNotStart : exitNothingStarts;
}

// Whatever went wrong, a target that is there is a whole launcher: the player gets it back.
bool startAgain(const Arguments& arguments) {
    ::SetEnvironmentVariableW(ca::install::handoverFailedVariable,
                              ca::install::handoverFailedValue);
    return start(arguments.target, ca::system::Patience(scannerTimes));
}

// A refused stage folder, such as one behind a link, is no reason to leave the player without a
// launcher. The one beside this very program may be started whoever asks for it.
ExitStatus refuse(const Arguments& arguments, ExitStatus status) {
    const std::wstring own = ca::system::executableName();
    const std::wstring folder = arguments.target.substr(0, arguments.target.find_last_of(L"/\\"));
    const bool isBeside = own.starts_with(folder) && own.find_last_of(L"/\\") == folder.size();
    if (status == exitBadStage && isBeside && waitForEnd(arguments.processId, longestWait)) {
        startAgain(arguments); // the status says what was wrong before
    }
    return status;
}

} // namespace

int main() {
    Arguments arguments;
    const ExitStatus asked = readArguments(arguments);
    if (asked != exitReplaced) {
        return refuse(arguments, asked);
    }
    if (!waitForEnd(arguments.processId, longestWait)) {
        return exitLauncherStillRuns;
    }
    // Whoever may write here has had the time to put a link in.
    const ExitStatus stillAsked = readArguments(arguments);
    if (stillAsked != exitReplaced) {
        return refuse(arguments, stillAsked);
    }
    const ca::system::Patience patience(times);
    ExitStatus status = isProgram(arguments.staged, patience) ? replaceLauncher(arguments, patience)
                                                              : exitNotAProgram;
    if (status != exitReplaced && !startAgain(arguments)) {
        status = exitNothingStarts;
    }
    // Also after a failure: nothing of it is ever used again. Where there is no launcher at all,
    // the new one is the only one.
    if (!ca::system::isLink(arguments.work) && !ca::system::isMissing(arguments.target)) {
        ca::system::removeFolder(arguments.stage);
    }
    return status;
}
