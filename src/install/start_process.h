// Starting a program of the installation.
#pragma once

#include <filesystem>
#include <string>
#include <windows.h>

namespace ca::install {

// Starts `program` (absolute) with its own folder as the working directory, this process's
// environment and no inherited handles. The command line is the quoted path and then `arguments` as
// they stand, which begin with a blank unless they are empty. True when the process has been made;
// it isn't observed any further, and it outlives this one. Any thread.
bool startProcess(const std::filesystem::path& program, const std::wstring& arguments,
                  DWORD creationFlags);

} // namespace ca::install
