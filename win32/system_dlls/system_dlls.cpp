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

// Slots are written by one thread at a time: the first of two that share a page would take the
// page's rights away from the second. No library is loaded under this lock, so it waits for no
// other. Its functions are kernel32's, which are there before the first line.
SRWLOCK slotsLock = SRWLOCK_INIT;

// Some linkers put the slots into a section that can't be written (binutils since 2.44, link.exe
// where it keeps them apart), some don't. The page can be written for as long as this takes, and
// is what it was afterwards. A slot that stays as it is costs the next call the same way again.
void store(FARPROC* slot, FARPROC function) {
    ::AcquireSRWLockExclusive(&slotsLock);
    DWORD before = 0;
    if (::VirtualProtect(slot, sizeof(*slot), PAGE_READWRITE, &before)) {
        ::InterlockedExchangePointer(reinterpret_cast<void**>(slot),
                                     reinterpret_cast<void*>(function));
        ::VirtualProtect(slot, sizeof(*slot), before, &before);
    }
    ::ReleaseSRWLockExclusive(&slotsLock);
}

} // namespace

// Called by the import library's stubs, under this name, until `slot` holds the function's address.
// Two threads may be here at once; both then write the same. The stub calls what this returns.
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
    store(slot, function);
    return function;
}
