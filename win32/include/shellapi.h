// Start of a program with higher rights, for hosts that are not Windows: the elevation prompt is
// the desktop's own, asked through `pkexec`.
#pragma once

#include <windows.h>

inline constexpr INT SW_SHOWNORMAL = 1;

// The results of ShellExecuteW up to 32 are failures.
inline constexpr INT SE_ERR_FNF = 2;
inline constexpr INT SE_ERR_PNF = 3;
inline constexpr INT SE_ERR_ACCESSDENIED = 5;
inline constexpr INT SE_ERR_OOM = 8;
inline constexpr INT SE_ERR_NOASSOC = 31;

// The arguments in a command line by the rules of the C runtime on Windows, the program's name
// first. Freed by LocalFree as a whole. Null on failure.
LPWSTR* CommandLineToArgvW(LPCWSTR commandLine, int* count);

// Only the verb "runas" is known: runs `file` as the administrator, with `parameters` split as
// CreateProcessW splits a command line. Blocks while the prompt is open. The result:
//  - above 32: the program has been started. It isn't waited for and outlives the caller.
//  - SE_ERR_ACCESSDENIED: the prompt was refused or couldn't be shown.
//  - SE_ERR_FNF: `file` isn't there, or the host has no pkexec.
//  - SE_ERR_NOASSOC: another verb.
//
// The last error holds the matching number. `window` and `folder` must be null and `show`
// SW_SHOWNORMAL (else 0 with ERROR_INVALID_PARAMETER).
//
// The program runs with a cleared environment, as pkexec makes it, apart from the variables that
// lead to the caller's display (X11 and Wayland), and in the folder of its own file.
HINSTANCE ShellExecuteW(HWND window, LPCWSTR verb, LPCWSTR file, LPCWSTR parameters, LPCWSTR folder,
                        INT show);
