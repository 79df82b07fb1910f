// Keeps a file open, as a scanner does: hold_file FILE SHARE MILLISECONDS MARK, where MARK is made
// as soon as it is open.
#include <string>
#include <windows.h>

#include <shellapi.h>

int main() {
    int count = 0;
    wchar_t** words = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    const auto share = static_cast<DWORD>(std::stoul(words[2]));
    if (::CreateFileW(words[1], GENERIC_READ, share, nullptr, OPEN_EXISTING, 0, nullptr) ==
            INVALID_HANDLE_VALUE ||
        ::CreateFileW(words[4], GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr) ==
            INVALID_HANDLE_VALUE) {
        return 1;
    }
    ::Sleep(static_cast<DWORD>(std::stoul(words[3])));
}
