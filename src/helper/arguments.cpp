#include "helper/arguments.h"

#include "install/folders.h"

#include <vector>

#include <shellapi.h>

namespace ca::helper {

namespace {

constexpr std::wstring_view launcherName = L"ColdAnchorLauncher.exe";
constexpr std::wstring_view workFolderName = L".coldanchor-update";
constexpr std::wstring_view stagePrefix = L"stage-";

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

bool readProcessId(const std::wstring& text, DWORD& processId) {
    if (text.empty() || text.size() > 10 ||
        text.find_first_not_of(L"0123456789") != std::wstring::npos) {
        return false;
    }
    const unsigned long long number = std::stoull(text);
    processId = static_cast<DWORD>(number);
    return number == processId && number != 0;
}

// The path with "." and ".." resolved and one kind of separator; empty when the system refuses it.
std::wstring fullPath(const std::wstring& path) {
    std::wstring full(::GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
    if (!full.empty()) {
        full.resize(::GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(),
                                       nullptr));
    }
    return full;
}

// Splits "<folder><separator>.coldanchor-update<separator>stage-<stamp><separator>...".
bool readStage(Arguments& arguments, wchar_t separator) {
    arguments.work = arguments.folder + separator + std::wstring(workFolderName);
    const std::wstring start = arguments.work + separator + std::wstring(stagePrefix);
    if (!arguments.staged.starts_with(start)) {
        return false;
    }
    const std::size_t end = arguments.staged.find(separator, start.size());
    if (end == std::wstring::npos || end + 1 == arguments.staged.size()) {
        return false;
    }
    const std::wstring stamp = arguments.staged.substr(start.size(), end - start.size());
    if (stamp.empty() || stamp.find_first_not_of(L"0123456789") != std::wstring::npos) {
        return false;
    }
    arguments.stage = arguments.staged.substr(0, end);
    arguments.backup = arguments.work + separator + L"backup-" + stamp;
    for (std::wstring* path :
         {&arguments.work, &arguments.staged, &arguments.stage, &arguments.backup}) {
        *path = install::withoutLimit(*path);
    }
    if (install::isLink(arguments.work)) {
        return false;
    }
    for (std::size_t at = arguments.stage.size(); at != std::wstring::npos;
         at = arguments.staged.find(separator, at + 1)) {
        if (install::isLink(arguments.staged.substr(0, at))) {
            return false;
        }
    }
    return !install::isLink(arguments.staged);
}

} // namespace

ExitStatus readArguments(Arguments& arguments) {
    const std::vector<std::wstring> words = commandLine();
    if (words.size() != 9 || words[1] != L"--wait-pid" || words[3] != L"--replace" ||
        words[5] != L"--target" || words[7] != L"--relaunch" ||
        !readProcessId(words[2], arguments.processId)) {
        return exitBadCommandLine;
    }
    arguments.staged = fullPath(words[4]);
    arguments.target = fullPath(words[6]);
    if (arguments.staged.empty() || arguments.target.empty()) {
        return exitBadCommandLine;
    }
    if (words[6] != words[8] || !arguments.target.ends_with(launcherName) ||
        arguments.target.size() < launcherName.size() + 2) {
        return exitBadTarget;
    }
    const std::size_t nameBegins = arguments.target.size() - launcherName.size();
    const wchar_t separator = arguments.target[nameBegins - 1];
    if (separator != L'\\' && separator != L'/') {
        return exitBadTarget;
    }
    arguments.folder = arguments.target.substr(0, nameBegins - 1);
    return readStage(arguments, separator) ? exitReplaced : exitBadStage;
}

} // namespace ca::helper
