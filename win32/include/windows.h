// The part of the Windows API that the launcher calls, for hosts that are not Windows: base types,
// error numbers, text, module and environment, files and processes. Names, values and results are
// the SDK's.
//
// A call that isn't declared here doesn't exist for the launcher, and using it fails to compile. A
// flag or an argument that this layer can't honour is refused with an error (usually
// ERROR_INVALID_PARAMETER), never ignored.
//
// Every call may be made from any thread and blocks until it is done, unless it says otherwise.
// Failures are reported as on Windows: by the result, with the number behind it in the calling
// thread's GetLastError.
//
// Where the layer differs from Windows on purpose:
//  - wchar_t is the host's: 32 bits, one code point each, where Windows has 16 bits of UTF-16.
//    Sizes in bytes are therefore sizeof(wchar_t) times the number of characters, never 2 times.
//  - Paths are the host's, with "/" between folders, case-sensitive, without a limit of 260
//    characters. They reach the system as UTF-8.
//  - Names of environment variables are case-sensitive.
//  - Of the sharing modes only the one that shares nothing is enforced, and only among those who
//    ask for it: two such handles of one file exclude each other, also of two processes.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

using BOOL = int;
using BYTE = unsigned char;
using UCHAR = unsigned char;
using WORD = std::uint16_t;
using INT = int;
using UINT = unsigned int;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using DWORD = std::uint32_t;
using ULONGLONG = std::uint64_t;
using DWORD_PTR = std::uintptr_t;
using CHAR = char;
using WCHAR = wchar_t;

using LPVOID = void*;
using LPCVOID = const void*;
using LPBYTE = BYTE*;
using PUCHAR = UCHAR*;
using LPDWORD = DWORD*;
using LPSTR = char*;
using LPCSTR = const char*;
using LPWSTR = wchar_t*;
using LPCWSTR = const wchar_t*;

using HANDLE = void*;
struct InstanceTag;
using HINSTANCE = InstanceTag*;
using HMODULE = HINSTANCE;
struct WindowTag;
using HWND = WindowTag*;

inline constexpr BOOL FALSE = 0;
inline constexpr BOOL TRUE = 1;
inline constexpr DWORD MAX_PATH = 260;
inline const HANDLE INVALID_HANDLE_VALUE = std::bit_cast<HANDLE>(~std::uintptr_t{0});

// Error numbers (winerror.h).
inline constexpr DWORD ERROR_SUCCESS = 0;
inline constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
inline constexpr DWORD ERROR_PATH_NOT_FOUND = 3;
inline constexpr DWORD ERROR_TOO_MANY_OPEN_FILES = 4;
inline constexpr DWORD ERROR_ACCESS_DENIED = 5;
inline constexpr DWORD ERROR_INVALID_HANDLE = 6;
inline constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;
inline constexpr DWORD ERROR_INVALID_DATA = 13;
inline constexpr DWORD ERROR_NOT_SAME_DEVICE = 17;
inline constexpr DWORD ERROR_WRITE_PROTECT = 19;
inline constexpr DWORD ERROR_GEN_FAILURE = 31;
inline constexpr DWORD ERROR_NO_MORE_FILES = 18;
inline constexpr DWORD ERROR_SHARING_VIOLATION = 32;
inline constexpr DWORD ERROR_LOCK_VIOLATION = 33;
inline constexpr DWORD ERROR_NOT_SUPPORTED = 50;
inline constexpr DWORD ERROR_FILE_EXISTS = 80;
inline constexpr DWORD ERROR_INVALID_PARAMETER = 87;
inline constexpr DWORD ERROR_DISK_FULL = 112;
inline constexpr DWORD ERROR_INSUFFICIENT_BUFFER = 122;
inline constexpr DWORD ERROR_INVALID_NAME = 123;
inline constexpr DWORD ERROR_MOD_NOT_FOUND = 126;
inline constexpr DWORD ERROR_DIR_NOT_EMPTY = 145;
inline constexpr DWORD ERROR_ALREADY_EXISTS = 183;
inline constexpr DWORD ERROR_BAD_EXE_FORMAT = 193;
inline constexpr DWORD ERROR_ENVVAR_NOT_FOUND = 203;
inline constexpr DWORD ERROR_FILENAME_EXCED_RANGE = 206;
inline constexpr DWORD ERROR_FILE_TOO_LARGE = 223;
inline constexpr DWORD ERROR_MORE_DATA = 234;
inline constexpr DWORD ERROR_DIRECTORY = 267;
inline constexpr DWORD ERROR_DELETE_PENDING = 303;
inline constexpr DWORD ERROR_INVALID_FLAGS = 1004;
inline constexpr DWORD ERROR_NO_UNICODE_TRANSLATION = 1113;
inline constexpr DWORD ERROR_IO_DEVICE = 1117;
inline constexpr DWORD ERROR_USER_MAPPED_FILE = 1224;
inline constexpr DWORD ERROR_NO_SYSTEM_RESOURCES = 1450;

// The calling thread's last error number. A call that succeeds leaves it alone, unless its
// description says otherwise.
DWORD GetLastError();
void SetLastError(DWORD error);

// --- Text ---

inline constexpr UINT CP_UTF8 = 65001;
inline constexpr DWORD MB_ERR_INVALID_CHARS = 8;

// UTF-8 to wide text. `byteCount` -1 means up to and including the terminating zero; a positive
// count is exact and adds no zero. With `wideCount` 0 nothing is written and the result is the
// number of wide characters needed. With flags 0 every ill-formed sequence becomes one U+FFFD; with
// MB_ERR_INVALID_CHARS it fails with ERROR_NO_UNICODE_TRANSLATION. Returns the number of wide
// characters, 0 on failure: ERROR_INVALID_PARAMETER (another code page, a count of 0 or below -1,
// null pointers), ERROR_INVALID_FLAGS, ERROR_INSUFFICIENT_BUFFER (a part may have been written).
int MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR bytes, int byteCount, LPWSTR wide,
                        int wideCount);

// Wide text to UTF-8, with counts that mean the same. `flags` must be 0, `defaultCharacter` and
// `defaultUsed` null. A value that is no Unicode character becomes U+FFFD.
int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR wide, int wideCount, LPSTR bytes,
                        int byteCount, LPCSTR defaultCharacter, BOOL* defaultUsed);

// --- Module, process id, environment ---

// Path of the running executable as it was at the first call, so that a launcher that is renamed or
// replaced while it runs still knows where it came from. `module` must be null, else
// ERROR_MOD_NOT_FOUND. Returns the length without the zero, and then the last error is
// ERROR_SUCCESS. A buffer too small gets the path cut and zero-terminated; the result is then
// `size` and the last error ERROR_INSUFFICIENT_BUFFER. 0 on failure.
DWORD GetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD size);

DWORD GetCurrentProcessId();

// Value of an environment variable. Returns its length without the zero if it fits into `size`
// characters, otherwise the size needed with the zero and nothing is promised about the buffer. 0
// with ERROR_ENVVAR_NOT_FOUND if there is none; the value of an empty variable has length 0 too and
// leaves the last error alone. Must not run while another thread changes the environment.
DWORD GetEnvironmentVariableW(LPCWSTR name, LPWSTR buffer, DWORD size);

// All variables as "NAME=value", a zero behind each and one more at the end. A value
// that isn't UTF-8 is empty. Freed by the second call; null without memory. Must not run while
// another thread changes the environment.
LPWSTR GetEnvironmentStringsW();
BOOL FreeEnvironmentStringsW(LPWSTR block);

// Sets a variable for this process and those that it starts; null removes it. Must not run while
// another thread uses the environment.
BOOL SetEnvironmentVariableW(LPCWSTR name, LPCWSTR value);

// --- Files ---

inline constexpr DWORD GENERIC_READ = 0x80000000U;
inline constexpr DWORD GENERIC_WRITE = 0x40000000U;
inline constexpr DWORD FILE_SHARE_READ = 1;
inline constexpr DWORD FILE_SHARE_WRITE = 2;
inline constexpr DWORD FILE_SHARE_DELETE = 4;
inline constexpr DWORD CREATE_NEW = 1;
inline constexpr DWORD CREATE_ALWAYS = 2;
inline constexpr DWORD OPEN_EXISTING = 3;
inline constexpr DWORD OPEN_ALWAYS = 4;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
inline constexpr DWORD FILE_ATTRIBUTE_TEMPORARY = 0x100;
inline constexpr DWORD FILE_FLAG_DELETE_ON_CLOSE = 0x04000000U;
inline constexpr DWORD FILE_FLAG_SEQUENTIAL_SCAN = 0x08000000U;

struct SECURITY_ATTRIBUTES;
using LPSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;
struct OVERLAPPED;
using LPOVERLAPPED = OVERLAPPED*;

// Opens or makes a file; INVALID_HANDLE_VALUE on failure. `access` is any mix of the two GENERIC_
// values with at least one; `security` and `templateFile` must be null. A folder can't be opened
// (ERROR_ACCESS_DENIED). CREATE_NEW refuses what exists with ERROR_FILE_EXISTS; CREATE_ALWAYS
// empties it, and the last error is then ERROR_ALREADY_EXISTS, else ERROR_SUCCESS. A missing file
// is ERROR_FILE_NOT_FOUND, a missing folder above it ERROR_PATH_NOT_FOUND.
//
// A file made here may be executed, within the process's umask: on Windows a file needs no
// permission for that, and the launcher installs programs. FILE_FLAG_DELETE_ON_CLOSE removes the
// name when the handle is closed, unless another file has taken it; unlike on Windows a process
// that is killed leaves the file behind. The handle isn't inherited.
HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                   DWORD disposition, DWORD flagsAndAttributes, HANDLE templateFile);

// Reads up to `size` bytes at the file's position with one read(2), without a buffer between. TRUE
// with `*read` 0 is the end of the file. `overlapped` must be null.
BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD size, LPDWORD read, LPOVERLAPPED overlapped);

// Writes all `size` bytes at the file's position. On failure `*written` is the number that were
// written. `overlapped` must be null.
BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD size, LPDWORD written, LPOVERLAPPED overlapped);

// Returns when everything written to the file is on the disk. Needs a handle with GENERIC_WRITE.
BOOL FlushFileBuffers(HANDLE file);

// Ends a handle of CreateFileW, CreateProcessW or OpenProcess. Null fails with
// ERROR_INVALID_HANDLE; INVALID_HANDLE_VALUE, which GetCurrentProcess returns too, is left alone.
BOOL CloseHandle(HANDLE handle);

inline constexpr DWORD MOVEFILE_REPLACE_EXISTING = 1;
inline constexpr DWORD MOVEFILE_COPY_ALLOWED = 2;
inline constexpr DWORD MOVEFILE_WRITE_THROUGH = 8;

// Renames a file or folder within one file system, in one step: other processes see the old name or
// the new one. Without MOVEFILE_REPLACE_EXISTING an existing target refuses with
// ERROR_ALREADY_EXISTS; with it a file takes the place of a file, and a folder on either side
// refuses with ERROR_ACCESS_DENIED. MOVEFILE_WRITE_THROUGH returns after both folders have reached
// the disk, as far as this process may open them and the disk does so: the new name stands in any
// case. Another file system is ERROR_NOT_SAME_DEVICE: MOVEFILE_COPY_ALLOWED and all
// other flags are refused with ERROR_INVALID_PARAMETER.
BOOL MoveFileExW(LPCWSTR from, LPCWSTR to, DWORD flags);

// --- Processes ---

inline constexpr DWORD CREATE_NO_WINDOW = 0x08000000U;

struct STARTUPINFOW {
    DWORD cb;
    LPWSTR lpReserved;
    LPWSTR lpDesktop;
    LPWSTR lpTitle;
    DWORD dwX;
    DWORD dwY;
    DWORD dwXSize;
    DWORD dwYSize;
    DWORD dwXCountChars;
    DWORD dwYCountChars;
    DWORD dwFillAttribute;
    DWORD dwFlags;
    WORD wShowWindow;
    WORD cbReserved2;
    LPBYTE lpReserved2;
    HANDLE hStdInput;
    HANDLE hStdOutput;
    HANDLE hStdError;
};
using LPSTARTUPINFOW = STARTUPINFOW*;

struct PROCESS_INFORMATION {
    HANDLE hProcess;
    HANDLE hThread;
    DWORD dwProcessId;
    DWORD dwThreadId;
};
using LPPROCESS_INFORMATION = PROCESS_INFORMATION*;

// Starts a program in a session of its own, so that it outlives the launcher, however that ends. It
// inherits the environment and the three standard streams, and no other open file. `application` is
// required and is the file that is run. `commandLine` (null: the application's name) is split into
// arguments by the rules of the C runtime on Windows, the first being the program's name. `folder`
// null is the caller's own folder; one that doesn't exist is refused with ERROR_DIRECTORY. Both
// security attributes and `environment` must be null, `inherit` FALSE, `flags` 0 or
// CREATE_NO_WINDOW (which changes nothing, since no program gets a console window here), `startup`
// zeroed except for its size.
//
// On success the caller closes both handles of `process`. The layer waits for the ended program
// itself, so none is left as a zombie in a launcher that lives on. Failures: ERROR_FILE_NOT_FOUND,
// ERROR_PATH_NOT_FOUND, ERROR_ACCESS_DENIED (no permission to execute it), ERROR_BAD_EXE_FORMAT
// (executable by its permissions, but no program).
BOOL CreateProcessW(LPCWSTR application, LPWSTR commandLine, LPSECURITY_ATTRIBUTES processSecurity,
                    LPSECURITY_ATTRIBUTES threadSecurity, BOOL inherit, DWORD flags,
                    LPVOID environment, LPCWSTR folder, LPSTARTUPINFOW startup,
                    LPPROCESS_INFORMATION process);

// --- Waiting for a process ---

inline constexpr DWORD SYNCHRONIZE = 0x00100000U;
inline constexpr DWORD PROCESS_QUERY_LIMITED_INFORMATION = 0x1000;
inline constexpr DWORD WAIT_OBJECT_0 = 0;
inline constexpr DWORD WAIT_TIMEOUT = 258;
inline constexpr DWORD WAIT_FAILED = 0xFFFFFFFFU;

struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};
using LPFILETIME = FILETIME*;

// A handle on the process itself, which a later process with the same number isn't. `access` is
// both values above and nothing else, `inherit` FALSE. Null with ERROR_INVALID_PARAMETER when no
// process has this number. A process that has ended but that its parent hasn't waited for can still
// be opened, and counts as ended.
HANDLE OpenProcess(DWORD access, BOOL inherit, DWORD processId);

// For OpenProcess's handles and GetCurrentProcess's, which needs no closing. `created` counts steps
// of 100 nanoseconds from the host's start, where Windows counts them from 1601: it tells which
// process is older, to a hundredth of a second. The other three times are set to 0.
BOOL GetProcessTimes(HANDLE process, LPFILETIME created, LPFILETIME ended, LPFILETIME kernel,
                     LPFILETIME user);
HANDLE GetCurrentProcess();

// WAIT_OBJECT_0 once the process has ended, WAIT_TIMEOUT when it still runs after `milliseconds`.
DWORD WaitForSingleObject(HANDLE process, DWORD milliseconds);

void Sleep(DWORD milliseconds);

// Milliseconds since the host's start.
ULONGLONG GetTickCount64();

// --- Folders and names ---

inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
inline constexpr DWORD FILE_ATTRIBUTE_DEVICE = 0x40;
inline constexpr DWORD FILE_ATTRIBUTE_REPARSE_POINT = 0x400;
inline constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFFU;
inline constexpr DWORD SCS_64BIT_BINARY = 6;

struct WIN32_FIND_DATAW {
    DWORD dwFileAttributes; // as GetFileAttributesW
    WCHAR cFileName[MAX_PATH];
};
using LPWIN32_FIND_DATAW = WIN32_FIND_DATAW*;

// FILE_ATTRIBUTE_DIRECTORY, FILE_ATTRIBUTE_NORMAL for a file, or FILE_ATTRIBUTE_DEVICE for a pipe
// and the like. A symbolic link isn't followed and has FILE_ATTRIBUTE_REPARSE_POINT; one to a
// folder has both bits, as on Windows.
DWORD GetFileAttributesW(LPCWSTR path);

BOOL CreateDirectoryW(LPCWSTR path, LPSECURITY_ATTRIBUTES security);

// A link is removed itself: RemoveDirectoryW takes those to folders, DeleteFileW all others.
BOOL RemoveDirectoryW(LPCWSTR path);
BOOL DeleteFileW(LPCWSTR path);

// A second name for a file on the same volume. ERROR_ALREADY_EXISTS when `link` is taken.
BOOL CreateHardLinkW(LPCWSTR link, LPCWSTR existing, LPSECURITY_ATTRIBUTES security);

// Copies the file's bytes and permissions. A copy that fails half-way is removed. A target that is
// a second name of the source is refused with ERROR_SHARING_VIOLATION.
BOOL CopyFileW(LPCWSTR from, LPCWSTR to, BOOL failIfExists);

// `path` without "." and "..", absolute by the working folder if it is relative; the disk isn't
// asked. Returns the length without the zero if the path fits into `size` characters with it, else
// the size needed with the zero; 0 on failure. `fileName` must be null.
DWORD GetFullPathNameW(LPCWSTR path, DWORD size, LPWSTR buffer, LPWSTR* fileName);

// Which kind of program the file is: SCS_64BIT_BINARY for one of this host, any other file fails
// with ERROR_BAD_EXE_FORMAT.
BOOL GetBinaryTypeW(LPCWSTR path, LPDWORD kind);

// The entries of a folder, in no order; `pattern` is the folder and "/*", and nothing else is
// accepted. "." and ".." are left out. INVALID_HANDLE_VALUE when the folder can't be read or is
// empty (ERROR_FILE_NOT_FOUND). The end of the list is FALSE with ERROR_NO_MORE_FILES. FindClose
// ends the handle.
HANDLE FindFirstFileW(LPCWSTR pattern, LPWIN32_FIND_DATAW entry);
BOOL FindNextFileW(HANDLE search, LPWIN32_FIND_DATAW entry);
BOOL FindClose(HANDLE search);

// --- Command line ---

// This process's arguments, quoted so that CommandLineToArgvW returns them. Never to be freed.
LPWSTR GetCommandLineW();

// Frees the result of CommandLineToArgvW. Returns null.
HANDLE LocalFree(HANDLE memory);
