// What the contract's tests share. They run against Windows' own functions and against the layer that stands in for
// them; where one of the two is known to differ, a row names both answers.
#pragma once

#include "install/paths.h"
#include "unit/temporary_folder.h"

#include <chrono>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <windows.h>

namespace ca::test {

#ifdef _WIN32
inline constexpr bool onWindows = true;
#else
inline constexpr bool onWindows = false;
#endif

using install::pathFromWide;
using install::utf8FromPath;
using install::wideFromPath;
using install::wideFromUtf8;

// The program that the tests start; what it does stands in contract_child.cpp.
inline std::filesystem::path childProgram() {
    return install::executableDir() / "contract_child.exe";
}

inline std::string setting(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

// Whether `condition` came true within half a minute, looked at over and over.
inline bool comesTrue(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    bool held = condition();
    while (!held && std::chrono::steady_clock::now() < deadline)
        held = condition();
    return held;
}

} // namespace ca::test
