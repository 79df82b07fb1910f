// The calling thread's last error, and the host's error numbers in Windows' words.
#pragma once

#include <windows.h>

namespace ca::win32 {

// The Win32 number of an errno value.
DWORD errorFromErrno(int number);

// Sets the last error and returns FALSE, so that a failing call ends in one line.
BOOL fail(DWORD error);

} // namespace ca::win32
