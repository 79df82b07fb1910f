// Starting a program. Any thread.
#pragma once

#include "system/system_path.h"

#include <string>
#include <windows.h>

namespace ca::system {

// Starts `program` (absolute) with its own folder as the working directory, this process's
// environment and no inherited handles. The command line is the quoted path and then `arguments`
// as they are, which begin with a space unless they are empty. True when the process has been
// made; it isn't observed any further, and it outlives this one. False leaves the reason as the
// last error.
bool startProgram(const SystemPath& program, const std::wstring& arguments, DWORD creationFlags);

} // namespace ca::system
