// What this process knows of itself. Any thread.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace ca::system {

// The running program's own file, whatever the working directory is. Empty when the system can't
// name it or the name has 32,768 characters or more.
std::filesystem::path executableFile();

// An environment variable's value; empty when it isn't set.
std::wstring environmentValue(const wchar_t* name);

// The names of all environment variables. No other thread may change the environment meanwhile.
std::vector<std::wstring> environmentNames();

} // namespace ca::system
