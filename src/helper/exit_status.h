// How ColdAnchorUpdateHelper.exe ends. It shows nothing, so these numbers are its only report;
// docs/update-helper.md explains them to whoever reads a crash collector or a script's log.
#pragma once

namespace ca::helper {

// Where the launcher's place was empty before, none is started again.
enum ExitStatus : int {
    exitReplaced = 0,        // the new launcher is in place and has been started
    exitBadCommandLine = 10, // not the documented one; nothing was touched
    // not the launcher's name, or another program is to be started; nothing was touched
    exitBadTarget = 11,
    // the new file isn't in a stage folder of the target's installation, or there is a link on the
    // way; nothing was touched, and a launcher beside this helper was started again
    exitBadStage = 12,
    // the new file is missing, empty or no program; the old launcher was started again
    exitNotAProgram = 13,
    exitLauncherStillRuns = 14, // the wait's upper bound passed; nothing was touched
    exitNotKept = 15,           // the old launcher couldn't be kept aside; it was started again
    // the new file couldn't be moved into place; the old launcher was started again
    exitNotReplaced = 16,
    // the new launcher couldn't be started; the old one is back and was started
    exitNewDoesNotStart = 17,
    exitNothingStarts = 18, // neither could be started, or the old one couldn't be put back
};

} // namespace ca::helper
