// Names winhttp and version, calls neither, and so starts with whatever goes by these names.
#include <windows.h>

#include <winhttp.h>

int main(int count, char**) {
    DWORD ignored = 0;
    return count > 5 && ::WinHttpCheckPlatform() && ::GetFileVersionInfoSizeW(L"", &ignored) != 0
               ? 1
               : 0;
}
