#include <cstdlib>
#include <windows.h>

HANDLE LocalFree(HANDLE memory) {
    // CommandLineToArgvW's, the only call whose result is freed so.
    std::free(memory);
    return nullptr;
}
