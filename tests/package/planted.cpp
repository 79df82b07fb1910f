// A library that lies where it doesn't belong. Leaves a file beside itself when it is loaded,
// and offers no function.
#include <string>
#include <windows.h>

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID);

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
    std::wstring path(1000, L'\0');
    if (reason == DLL_PROCESS_ATTACH) {
        path.resize(::GetModuleFileNameW(module, path.data(), 1000));
        path += L".loaded";
        ::CloseHandle(
            ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    }
    return TRUE;
}
