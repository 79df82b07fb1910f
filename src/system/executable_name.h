// The running program's own file.
#pragma once

#include <string>

namespace ca::system {

// Its full path, whatever the working directory is. Empty when the system can't name it or the name
// has 32,768 characters or more. Any thread.
std::wstring executableName();

} // namespace ca::system
