// The programs under test: those of this build, or of the Windows build, which run
// here through a runner.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace ca::test {

// Whether `condition` comes true within the time that even a slow machine needs.
template <typename Condition>
bool eventually(Condition condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

// Has the shell change what lies in `folder`; each command has to succeed.
inline void change(const std::filesystem::path& folder, const std::string& commands) {
    EXPECT_EQ(std::system(("set -e; cd '" + folder.string() + "'; " + commands).c_str()), 0)
        << commands;
}

inline std::string setting(const char* name, const char* standard = "") {
    const char* value = std::getenv(name);
    return value ? value : standard;
}

// The folder of the build under test: what the environment's PROGRAM_TEST_BUILD says, or this one.
inline std::filesystem::path testedBuild() {
    return setting("PROGRAM_TEST_BUILD", PROGRAM_TEST_BUILD);
}

inline std::filesystem::path builtProgram(const std::string& name) {
    return testedBuild() / "bin" / name;
}

// What stands before a program's path to run it: the words of PROGRAM_TEST_RUNNER; nothing
// for the host's programs.
inline const std::vector<std::string>& programRunner() {
    static const std::vector<std::string> runner = [] {
        std::istringstream words(setting("PROGRAM_TEST_RUNNER"));
        return std::vector<std::string>{std::istream_iterator<std::string>(words), {}};
    }();
    return runner;
}

// A program of the tested build, and what it is given.
inline std::vector<std::string> commandOf(const std::filesystem::path& program,
                                          const std::vector<std::string>& words = {}) {
    std::vector<std::string> command = programRunner();
    command.push_back(program.string());
    command.insert(command.end(), words.begin(), words.end());
    return command;
}

// A path as the programs under test name it: behind a runner the host's files are drive Z.
inline std::string shownPath(const std::filesystem::path& path) {
    std::string text = path.string();
    if (programRunner().empty()) {
        return text;
    }
    std::replace(text.begin(), text.end(), '/', '\\');
    return "Z:" + text;
}

} // namespace ca::test
