// What the contract's tests share. They run against Windows' own functions and against the layer that stands in for
// them; where one of the two is known to differ, a row names both answers.
#pragma once

#include "install/paths.h"
#include "support/programs.h"
#include "unit/temporary_folder.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <tuple>
#include <windows.h>

namespace ca::test {

#ifdef _WIN32
inline constexpr bool onWindows = true;
#else
inline constexpr bool onWindows = false;
#endif

using namespace install;

inline std::string setting(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

// The program that the tests start; what it does stands in contract_child.cpp.
inline std::filesystem::path childProgram() {
    return executableDir() / "contract_child.exe";
}

} // namespace ca::test
