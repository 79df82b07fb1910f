// What the helper is told, and whether it may do that.
#pragma once

#include "helper/exit_status.h"

#include <string>
#include <windows.h>

namespace ca::helper {

// The command line
//   "<helper>" --wait-pid <pid> --replace "<staged>" --target "<target>" --relaunch "<target>"
// with its paths made absolute; those below the work folder in the form that has no
// limit of 260 characters.
struct Arguments {
    DWORD processId = 0; // of the launcher that ends
    std::wstring staged; // the new launcher
    std::wstring target; // the launcher's place in the installation
    std::wstring folder; // the installation
    std::wstring work;   // "<folder>\.coldanchor-update"
    // the stage folder that `staged` lies in: "<folder>\.coldanchor-update\stage-<stamp>"
    std::wstring stage;
    // where the old launcher is kept: "<folder>\.coldanchor-update\backup-<stamp>"
    std::wstring backup;
};

// Reads this process's command line. exitReplaced means that `arguments` is complete and may be
// carried out; anything else says what is wrong with it. Changes nothing, but asks whether a link
// stands on the way to `staged`; that it is missing isn't wrong here. May be called again, to find
// a link that has been put there since.
ExitStatus readArguments(Arguments& arguments);

} // namespace ca::helper
