#include "system/process.h"

#include "system/path.h"

#include <vector>

namespace ca::system {

std::filesystem::path executableFile() {
    // The longest path that Windows knows has 32,767 characters; a result of the buffer's size
    // means that it was cut.
    std::vector<wchar_t> buffer(32768);
    const DWORD size = static_cast<DWORD>(buffer.size());
    const DWORD length = ::GetModuleFileNameW(nullptr, buffer.data(), size);
    if (length == 0 || length >= size) {
        return {};
    }
    return pathFromWide(std::wstring(buffer.data(), length));
}

std::wstring environmentValue(const wchar_t* name) {
    // The first call returns the size with the zero at the end, the second one the length.
    const DWORD size = ::GetEnvironmentVariableW(name, nullptr, 0);
    std::wstring value(size, L'\0');
    if (size != 0) {
        value.resize(::GetEnvironmentVariableW(name, value.data(), size));
    }
    return value;
}

bool startProgram(const std::filesystem::path& program, const std::wstring& arguments,
                  DWORD creationFlags) {
    const std::wstring name = wideFromPath(program);
    const std::wstring folder = wideFromPath(program.parent_path());
    std::wstring commandLine = L"\"" + name + L"\"" + arguments; // the call may write into it
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (!::CreateProcessW(name.c_str(), commandLine.data(), nullptr, nullptr, FALSE, creationFlags,
                          nullptr, folder.c_str(), &startup, &process)) {
        return false;
    }
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
    return true;
}

} // namespace ca::system
