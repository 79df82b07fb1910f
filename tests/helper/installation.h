// An installation in a folder of its own, with a new launcher staged, and the helper as a process on it. A program that
// tells of its start stands in for both launchers, which differ in their last bytes alone.
#pragma once

#include "demo/process.h"
#include "support/programs.h"
#include "unit/temporary_folder.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>

namespace ca::test {

namespace fs = std::filesystem;
using demo::Process;

inline const std::string noProcess = "4194304"; // beyond the numbers that Linux and Wine give out
inline const std::string launcherName = "ColdAnchorLauncher.exe";
inline const std::string stagePath = ".coldanchor-update/stage-1700000000123";

inline std::string standIn(const std::string& ending) {
    return readFile(builtProgram("stand_in.exe")) + ending;
}

// Looks like a program to whoever reads its first bytes, and can't be run.
inline std::string brokenProgram() {
    return standIn("").substr(0, programRunner().empty() ? 600 : 4096); // past what says which kind it is
}

using Contents = std::map<std::string, std::string>; // every path with its bytes; a link with where it leads

inline std::string differing(const Contents& a, const Contents& b) {
    std::map<std::string, std::string> entries;
    std::set_symmetric_difference(a.begin(), a.end(), b.begin(), b.end(), std::inserter(entries, entries.end()));
    std::string paths;
    for (const auto& [path, bytes] : entries)
        paths += path + "\n";
    return paths;
}

struct Installation {
    explicit Installation(const fs::path& place = "Größe XL", const fs::path& stagedName = launcherName,
                          const fs::path& disk = {})
        : game((disk.empty() ? folder.path() : disk) / place), stage(game / stagePath), staged(stage / stagedName) {
        put(target, standIn("old"));
        put(staged, standIn("new"));
        fs::create_directories(backup);
        writeFile(folder / "outside/file", "mine");
    }
    static void put(const fs::path& path, const std::string& bytes) {
        fs::permissions(writeFile(path, bytes), fs::perms::owner_all);
    }

    std::vector<std::string> arguments() const {
        return {"--wait-pid", noProcess,         "--replace",  shownPath(staged),
                "--target",   shownPath(target), "--relaunch", shownPath(target)};
    }
    std::unique_ptr<Process> begin(const std::vector<std::string>& words, std::vector<std::string> command = {}) const {
        for (const std::string& word : programRunner())
            command.push_back(word);
        command.push_back(builtProgram("ColdAnchorUpdateHelper.exe"));
        command.insert(command.end(), words.begin(), words.end());
        demo::ProcessOptions options;
        options.environment = {"ASAN_OPTIONS=detect_leaks=0"}; // which can't be done under strace
        return std::make_unique<Process>(command, options);
    }
    int run(const std::vector<std::string>& words, const std::vector<std::string>& command = {}) const {
        return begin(words, command)->wait(std::chrono::seconds(90)).value_or(-1);
    }
    int run() const { return run(arguments()); }

    Contents contents() const {
        Contents result;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder.path())) {
            std::string& bytes = result[entry.path().lexically_relative(folder.path())];
            if (entry.is_symlink())
                bytes = fs::read_symlink(entry.path());
            else if (entry.is_regular_file())
                bytes = readFile(entry.path());
        }
        return result;
    }
    // What is in the launcher's place has run once, without arguments, in the installation.
    void expectStarted(const std::string& ending) const {
        EXPECT_TRUE(eventually([&] { return readFile(game / "started.txt") == "1 here."; }));
        EXPECT_TRUE(readFile(target) == standIn(ending));
    }

    TemporaryFolder folder;
    fs::path game;
    fs::path target = game / launcherName;
    fs::path stage;
    fs::path staged;
    fs::path backup = game / ".coldanchor-update/backup-1700000000123";
};

} // namespace ca::test
