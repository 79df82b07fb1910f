#include <cstdlib>
#include <windows.h>

HANDLE LocalFree(HANDLE memory) {
    std::free(memory); // CommandLineToArgvW's, the only call whose result is freed so
    return nullptr;
}
