// What the contract's tests share. They run against Windows' own functions and against the layer
// that stands in for them; where one of the two is known to differ, a row says so.
#pragma once

#include "install/paths.h"
#include "support/programs.h"
#include "system/files.h"
#include "system/path.h"
#include "system/text.h"
#include "unit/temporary_folder.h"

#include <tuple>
#include <windows.h>

namespace ca::test {

#ifdef _WIN32
inline constexpr bool onWindows = true;
#else
inline constexpr bool onWindows = false;
#endif

using namespace install;
using namespace system;

// The program that the tests start; what it does stands in contract_child.cpp.
inline fs::path childProgram() {
    return executableDir() / "contract_child.exe";
}

// A call's success, or its error.
inline DWORD result(BOOL done) {
    return done ? 0 : ::GetLastError();
}

// What calls came to, one behind the other, and what each has to come to.
struct Step {
    const char* name;
    std::uint64_t got, expected;
};
inline void expectSteps(std::initializer_list<Step> steps) {
    for (const Step& step : steps) {
        EXPECT_EQ(step.got, step.expected) << step.name;
    }
}

} // namespace ca::test
