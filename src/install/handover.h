// The hand-over: what the launcher and the update helper tell each other, so that a new launcher
// takes the place of the running one. Pure; any thread.
#pragma once

#include <string>
#include <vector>
#include <windows.h>

namespace ca::install {

// What the launcher asks for on the helper's command line:
//   "<helper>" --wait-pid <pid> --replace "<staged>" --target "<target>" --relaunch "<relaunch>"
// Paths are absolute; none holds a quotation mark.
struct Handover {
    DWORD processId = 0;   // of the launcher, whose end the helper waits for
    std::wstring staged;   // path of the new launcher
    std::wstring target;   // path of its place in the installation
    std::wstring relaunch; // path of the program to start then; launchers name `target`
};

// The command line behind the program's name, with a space in front.
std::wstring handoverArguments(const Handover& handover);

// Reads the words of a command line, the program's name among them. False for any other than the
// one above; `handover` then holds anything. What the paths lead to isn't judged.
bool readHandover(const std::vector<std::wstring>& words, Handover& handover);

// The helper's sign to a launcher that it starts again, because the new one couldn't take its
// place: an environment variable, set to "1". Such a launcher doesn't hand over once more, or the
// two would start each other without end.
inline constexpr const wchar_t* handoverFailedVariable = L"COLDANCHOR_SELF_UPDATE_FAILED";
inline constexpr const wchar_t* handoverFailedValue = L"1";

} // namespace ca::install
