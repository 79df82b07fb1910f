#include "install/start_process.h"

#include "install/paths.h"

namespace ca::install {

bool startProcess(const std::filesystem::path& program, const std::wstring& arguments,
                  DWORD creationFlags) {
    const std::wstring name = wideFromPath(program);
    std::wstring commandLine = L"\"" + name + L"\"" + arguments; // the call may write into it
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (!::CreateProcessW(name.c_str(), commandLine.data(), nullptr, nullptr, FALSE, creationFlags,
                          nullptr, wideFromPath(program.parent_path()).c_str(), &startup,
                          &process)) {
        return false;
    }
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
    return true;
}

} // namespace ca::install
