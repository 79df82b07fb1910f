#include <windows.h>

#include <delayimp.h>

// What a program of ours does before its first line, and at the first call of each function of a
// delayed library. The linker's tables hold offsets from the start of the program's image.

extern "C" IMAGE_DOS_HEADER __ImageBase; // NOLINT(bugprone-reserved-identifier): the linker's name

namespace {

template <typename T>
T* at(DWORD offset) {
    return reinterpret_cast<T*>(reinterpret_cast<char*>(&__ImageBase) + offset);
}

// The exception that Microsoft's own loader of delayed libraries raises.
[[noreturn]] void fail(DWORD code) {
    ::RaiseException(VcppException(ERROR_SEVERITY_ERROR, code), EXCEPTION_NONCONTINUABLE, 0,
                     nullptr);
    ::ExitProcess(code);
}

// Windows calls it when the libraries that it looks for by itself are in place and before any
// constructor runs; one of them opens the random numbers for the stack protector. From here on,
// LoadLibrary without a path means the system's folder.
void NTAPI searchSystemFolderOnly(PVOID, DWORD reason, PVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        ::SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32);
    }
}

// The linker gathers the contents of the sections .CRT$XLA to .CRT$XLZ into the list of functions
// to call at each start.
[[gnu::section(".CRT$XLB"), gnu::used]] const PIMAGE_TLS_CALLBACK atStart = searchSystemFolderOnly;

} // namespace

// Called by the import library's stubs, under this name, until `slot` holds the function's address.
// Two threads may be here at once; both then write the same.
extern "C" FARPROC WINAPI
__delayLoadHelper2(PCImgDelayDescr library,
                   FARPROC* slot) { // NOLINT(bugprone-reserved-identifier)
    const HMODULE module = ::LoadLibraryExA(at<const char>(library->rvaDLLName), nullptr,
                                            LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (module == nullptr) {
        fail(ERROR_MOD_NOT_FOUND);
    }
    const auto index = slot - at<FARPROC>(library->rvaIAT);
    const auto& name = at<const IMAGE_THUNK_DATA>(library->rvaINT)[index].u1.AddressOfData;
    const FARPROC function =
        ::GetProcAddress(module, at<const IMAGE_IMPORT_BY_NAME>(static_cast<DWORD>(name))->Name);
    if (function == nullptr) {
        fail(ERROR_PROC_NOT_FOUND);
    }
    return *slot = function;
}
