#include "job/elevation.h"

#include "install/paths.h"

#include <cstdint>
#include <string>
#include <vector>
#include <windows.h>

#include <shellapi.h>

namespace ca::job {

bool isFolderWritable(const std::filesystem::path& folder) {
    const std::string name =
        ".coldanchor-write-test-" + std::to_string(::GetCurrentProcessId()) + ".tmp";
    const HANDLE file =
        ::CreateFileW(install::wideFromPath(folder / name).c_str(), GENERIC_WRITE, 0, nullptr,
                      CREATE_NEW, FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    ::CloseHandle(file);
    return true;
}

bool relaunchElevated() {
    std::vector<wchar_t> executable(32768);
    const DWORD length =
        ::GetModuleFileNameW(nullptr, executable.data(), static_cast<DWORD>(executable.size()));
    if (length == 0 || length >= executable.size()) {
        return false;
    }
    const std::string option = elevatedOption;
    const std::wstring parameters(option.begin(), option.end());
    const HINSTANCE result = ::ShellExecuteW(nullptr, L"runas", executable.data(),
                                             parameters.c_str(), nullptr, SW_SHOWNORMAL);
    // the documented line between a start and an error number
    return reinterpret_cast<std::intptr_t>(result) > 32;
}

} // namespace ca::job
