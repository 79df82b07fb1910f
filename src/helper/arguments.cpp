#include "helper/arguments.h"

#include "install/handover.h"
#include "install/paths.h"
#include "system/files.h"
#include "system/path.h"

#include <string>
#include <vector>

#include <shellapi.h>

namespace ca::helper {

namespace fs = std::filesystem;

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

// Whoever may write to the work folder could lead the helper elsewhere by a link.
bool hasLinkOnTheWay(const fs::path& staged, const fs::path& work) {
    fs::path place = staged;
    while (place != work) {
        if (system::isLink(place)) {
            return true;
        }
        place = place.parent_path();
    }
    return system::isLink(work);
}

} // namespace

ExitStatus readArguments(Arguments& arguments) {
    install::Handover handover;
    if (!install::readHandover(commandLine(), handover)) {
        return exitBadCommandLine;
    }
    arguments.processId = handover.processId;
    arguments.staged = system::fullPath(handover.staged);
    arguments.target = system::fullPath(handover.target);
    if (arguments.staged.empty() || arguments.target.empty()) {
        return exitBadCommandLine;
    }
    // By its spelling: another one of the same program is nothing that a launcher would write.
    const bool startsTarget = handover.relaunch.native() == handover.target.native();
    if (!startsTarget || arguments.target.filename() != install::launcherFileName) {
        return exitBadTarget;
    }
    arguments.folder = arguments.target.parent_path();
    if (!install::findWorkFolders(arguments.folder, arguments.staged, arguments.folders) ||
        hasLinkOnTheWay(arguments.staged, arguments.folders.work)) {
        return exitBadStage;
    }
    return exitReplaced;
}

} // namespace ca::helper
