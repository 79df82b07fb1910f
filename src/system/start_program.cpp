#include "system/start_program.h"

namespace ca::system {

namespace {

// A drive's root keeps its separator: without it the name means the drive's working directory.
std::wstring folderOf(const std::wstring& program) {
    const std::size_t end = program.find_last_of(L"/\\");
    if (end == std::wstring::npos) {
        return {};
    }
    const bool isRoot = end == 0 || program[end - 1] == L':';
    return program.substr(0, isRoot ? end + 1 : end);
}

} // namespace

bool startProgram(const SystemPath& program, const std::wstring& arguments, DWORD creationFlags) {
    const std::wstring folder = folderOf(program.text());
    // The call may write into it.
    std::wstring commandLine = L"\"" + program.text() + L"\"" + arguments;
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (!::CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, FALSE,
                          creationFlags, nullptr, folder.c_str(), &startup, &process)) {
        return false;
    }
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
    return true;
}

} // namespace ca::system
