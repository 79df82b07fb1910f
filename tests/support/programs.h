// The programs under test: those of this build, or of the Windows build, which run here through a runner.
#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

namespace ca::test {

// Whether `condition` comes true within the time that even a slow machine needs.
template <typename Condition>
bool eventually(Condition condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

// The folder of the build under test: what PROGRAM_TEST_BUILD says, or this one.
const std::filesystem::path& testedBuild();

inline std::filesystem::path builtProgram(const std::string& name) {
    return testedBuild() / "bin" / name;
}

// What stands before a program's path to run it: the words of PROGRAM_TEST_RUNNER; nothing for the host's programs.
const std::vector<std::string>& programRunner();

// A path as the programs under test name it: behind a runner the host's files are drive Z.
std::string shownPath(const std::filesystem::path& path);

} // namespace ca::test
