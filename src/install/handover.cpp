#include "install/handover.h"

namespace ca::install {

namespace {

constexpr const wchar_t* waitOption = L"--wait-pid";
constexpr const wchar_t* replaceOption = L"--replace";
constexpr const wchar_t* targetOption = L"--target";
constexpr const wchar_t* relaunchOption = L"--relaunch";

std::wstring pathArgument(const wchar_t* option, const std::wstring& path) {
    return L" " + std::wstring(option) + L" \"" + path + L"\"";
}

bool readProcessId(const std::wstring& text, DWORD& processId) {
    constexpr std::size_t mostDigits = 10; // of a number with 32 bits
    if (text.empty() || text.size() > mostDigits ||
        text.find_first_not_of(L"0123456789") != std::wstring::npos) {
        return false;
    }
    // Ten digits may still be too many for the system's numbers, and 0 is no launcher's.
    const unsigned long long number = std::stoull(text);
    processId = static_cast<DWORD>(number);
    return number == processId && number != 0;
}

} // namespace

std::wstring handoverArguments(const Handover& handover) {
    return L" " + std::wstring(waitOption) + L" " + std::to_wstring(handover.processId) +
           pathArgument(replaceOption, handover.staged) +
           pathArgument(targetOption, handover.target) +
           pathArgument(relaunchOption, handover.relaunch);
}

bool readHandover(const std::vector<std::wstring>& words, Handover& handover) {
    const bool isComplete = words.size() == 9 && words[1] == waitOption &&
                            words[3] == replaceOption && words[5] == targetOption &&
                            words[7] == relaunchOption;
    if (!isComplete || !readProcessId(words[2], handover.processId)) {
        return false;
    }
    handover.staged = words[4];
    handover.target = words[6];
    handover.relaunch = words[8];
    return true;
}

} // namespace ca::install
