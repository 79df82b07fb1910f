// What the helper is told, and whether it may do that.
#pragma once

#include "helper/exit_status.h"

#include <string>
#include <windows.h>

namespace ca::helper {

// The launcher's request, with its paths made full ones.
struct Arguments {
    DWORD processId = 0; // of the launcher that ends
    std::wstring staged; // the new launcher
    std::wstring target; // the launcher's place in the installation
    std::wstring name;   // the last part of `target`, with its separator in front
    std::wstring work;   // the installation's work folder
    std::wstring stage;  // the stage folder that holds `staged`
    std::wstring backup; // the backup folder of the same attempt
};

// Reads this process's command line. exitReplaced means that `arguments` is complete and may be
// carried out; anything else says what is wrong with it. Changes nothing, but asks whether there is
// a link on the way to `staged`; that it is missing isn't wrong here. May be called again, to find
// a link that has been put there since. Main thread.
ExitStatus readArguments(Arguments& arguments);

} // namespace ca::helper
