// Runs a program with other variables and gives its exit status: env [-u NAME]...
// [NAME=VALUE]... PROGRAM
#include <cwchar>
#include <string>
#include <windows.h>

#include <shellapi.h>

int main() {
    int count = 0;
    wchar_t** word = ::CommandLineToArgvW(::GetCommandLineW(), &count) + 1;
    for (; std::wcscmp(*word, L"-u") == 0; word += 2) {
        ::SetEnvironmentVariableW(word[1], nullptr);
    }
    for (wchar_t* value = nullptr; (value = std::wcschr(*word, L'=')) != nullptr; ++word) {
        *value = L'\0';
        ::SetEnvironmentVariableW(*word, value + 1);
    }
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    std::wstring line = L"\"" + std::wstring(*word) + L"\"";
    DWORD status = 255;
    if (::CreateProcessW(*word, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                         &process) &&
        ::WaitForSingleObject(process.hProcess, INFINITE) == WAIT_OBJECT_0) {
        ::GetExitCodeProcess(process.hProcess, &status);
    }
    return static_cast<int>(status);
}
