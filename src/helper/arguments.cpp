#include "helper/arguments.h"

#include "install/handover.h"
#include "install/paths.h"
#include "install/work_folders.h"
#include "system/files.h"
#include "system/text.h"

#include <string>
#include <vector>

#include <shellapi.h>

namespace ca::helper {

namespace {

std::vector<std::wstring> commandLine() {
    int count = 0;
    wchar_t** words = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    if (!words) {
        return {};
    }
    std::vector<std::wstring> result(words, words + count);
    ::LocalFree(words);
    return result;
}

// The path from the root on, with "." and ".." resolved by their names and one kind of separator;
// empty when the system refuses it.
std::wstring fullPath(const std::wstring& path) {
    // The first call returns the size with the zero at the end, the second one the length.
    const DWORD size = ::GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    std::wstring full(size, L'\0');
    if (size != 0) {
        full.resize(::GetFullPathNameW(path.c_str(), size, full.data(), nullptr));
    }
    return full;
}

bool readPaths(const install::Handover& handover, Arguments& arguments) {
    arguments.processId = handover.processId;
    arguments.staged = fullPath(handover.staged);
    arguments.target = fullPath(handover.target);
    return !arguments.staged.empty() && !arguments.target.empty();
}

// Splits "<folder><separator>ColdAnchorLauncher.exe".
bool readTarget(Arguments& arguments) {
    const std::size_t end = arguments.target.find_last_of(L"/\\");
    if (end == std::wstring::npos || end == 0) {
        return false;
    }
    arguments.name = arguments.target.substr(end);
    const std::wstring folder = arguments.target.substr(0, end);
    arguments.work =
        folder + arguments.name.front() + system::wideFromUtf8(install::workFolderName);
    return arguments.name.substr(1) == system::wideFromUtf8(install::launcherFileName);
}

// Splits "<work><separator>stage-<stamp><separator>...".
bool readStage(Arguments& arguments) {
    const wchar_t separator = arguments.name.front();
    const std::wstring start = arguments.work + separator;
    const std::size_t end = arguments.staged.find(separator, start.size());
    const bool namesFile = end != std::wstring::npos && end + 1 != arguments.staged.size();
    if (!arguments.staged.starts_with(start) || !namesFile) {
        return false;
    }
    const std::wstring folder = arguments.staged.substr(start.size(), end - start.size());
    const std::wstring stamp = install::stampOfStage(folder);
    arguments.stage = arguments.staged.substr(0, end);
    arguments.backup = start + install::backupFolderName(stamp);
    return !stamp.empty();
}

// Whoever may write to the work folder could lead the helper elsewhere by a link.
bool hasLinkOnTheWay(const Arguments& arguments) {
    const std::wstring& staged = arguments.staged;
    std::size_t end = arguments.work.size();
    while (end != std::wstring::npos) {
        if (system::isLink(staged.substr(0, end))) {
            return true;
        }
        end = staged.find(arguments.name.front(), end + 1);
    }
    return system::isLink(staged);
}

} // namespace

ExitStatus readArguments(Arguments& arguments) {
    install::Handover handover;
    if (!install::readHandover(commandLine(), handover) || !readPaths(handover, arguments)) {
        return exitBadCommandLine;
    }
    // By its spelling: another one of the same program is nothing that a launcher would write.
    if (handover.relaunch != handover.target || !readTarget(arguments)) {
        return exitBadTarget;
    }
    if (!readStage(arguments) || hasLinkOnTheWay(arguments)) {
        return exitBadStage;
    }
    return exitReplaced;
}

} // namespace ca::helper
