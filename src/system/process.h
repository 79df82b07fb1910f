// This process, and those that it starts. Any thread.
#pragma once

#include <filesystem>
#include <string>
#include <windows.h>

namespace ca::system {

// The running program's own file, whatever the working directory is. Empty when the system can't
// name it or the name has 32,768 characters or more.
std::filesystem::path executableFile();

// An environment variable's value; empty when it isn't set.
std::wstring environmentValue(const wchar_t* name);

// Starts `program` (absolute) with its own folder as the working directory, this process's
// environment and no inherited handles. The command line is the quoted path and then `arguments`
// as they are, which begin with a space unless they are empty. True when the process has been
// made; it isn't observed any further, and it outlives this one. False leaves the reason as the
// last error.
bool startProgram(const std::filesystem::path& program, const std::wstring& arguments,
                  DWORD creationFlags);

} // namespace ca::system
