// An installation in a folder of its own, with a new launcher staged, and the helper as a
// process on it. A program that tells of its start stands in for both launchers, which differ in
// their last bytes alone.
#pragma once

#include "shared/process.h"
#include "support/programs.h"
#include "unit/temporary_folder.h"

namespace ca::test {

using kit::Process;

inline const std::string noProcess = "4194304"; // beyond the numbers that Linux and Wine give out
inline const std::string launcherName = "ColdAnchorLauncher.exe";
inline const std::string stagePath = ".coldanchor-update/stage-1700000000123";

inline std::string standIn(const std::string& ending) {
    return readFile(builtProgram("stand_in.exe")) + ending;
}

struct Installation {
    explicit Installation(const fs::path& place = "Größe XL",
                          const fs::path& stagedName = launcherName, const fs::path& disk = {})
        : game((disk.empty() ? folder.path() : disk) / place),
          stage(game / stagePath),
          staged(stage / stagedName) {
        put(target, standIn("old"));
        put(staged, standIn("new"));
        fs::create_directories(backup);
        writeFile(folder / "outside" / launcherName, "mine");
    }
    static void put(const fs::path& path, const std::string& bytes) {
        fs::permissions(writeFile(path, bytes), fs::perms::owner_all);
    }

    std::vector<std::string> arguments() const {
        return {"--wait-pid", noProcess,         "--replace",  shownPath(staged),
                "--target",   shownPath(target), "--relaunch", shownPath(target)};
    }
    std::unique_ptr<Process> begin(const std::vector<std::string>& words,
                                   std::vector<std::string> command = {}) const {
        const auto helper = commandOf(builtProgram("ColdAnchorUpdateHelper.exe"), words);
        command.insert(command.end(), helper.begin(), helper.end());
        kit::ProcessOptions options;
        options.environment = {"ASAN_OPTIONS=detect_leaks=0"}; // which can't be done under strace
        return std::make_unique<Process>(command, options);
    }
    int run(const std::vector<std::string>& words,
            const std::vector<std::string>& command = {}) const {
        return begin(words, command)->wait(std::chrono::seconds(90)).value_or(-1);
    }
    int run() const { return run(arguments()); }

    Contents contents() const { return contentsOf(folder.path()); }
    // Makes a launcher one that looks like a program to whoever reads its first
    // bytes, and can't be run.
    static void breakProgram(const fs::path& path) {
        // past what says which kind it is
        put(path, standIn("").substr(0, programRunner().empty() ? 600 : 4096));
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
