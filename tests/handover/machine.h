// A scenario in which launchers follow one another. The windows that are looked at belong to the
// launcher of the channel, whose version is in their footers.
#pragma once

#include "program/scenario.h"

#include <csignal>

namespace ca::test {

inline const std::string launcherName = "ColdAnchorLauncher.exe";
inline const std::string helperName = "ColdAnchorUpdateHelper.exe";
// a second or more
inline constexpr const char* slowManifest = "location ~ json$ { limit_rate 800; }";

struct Machine : Scenario {
    ~Machine() {
        for (const pid_t id : launchers()) {
            ::kill(id, SIGKILL);
        }
    }

    void put(const fs::path& program, const fs::path& target) const {
        fs::create_directories(target.parent_path());
        fs::copy_file(testedBuild() / "bin" / program, target,
                      fs::copy_options::overwrite_existing);
    }

    // This installation's launchers that run, behind a runner or not.
    std::vector<pid_t> launchers() const {
        std::vector<pid_t> ids;
        for (const fs::directory_entry& entry : fs::directory_iterator("/proc")) {
            const std::string words = readFile(entry.path() / "cmdline");
            if (words.find(folder.path().filename()) != std::string::npos &&
                words.find(launcherName) != std::string::npos &&
                words.find("--wait-pid") == std::string::npos &&
                words.find("pkexec") == std::string::npos &&
                words.find("/bin/sh") == std::string::npos) {
                ids.push_back(std::stoi(entry.path().filename()));
            }
        }
        return ids;
    }

    // The first launcher ends by itself; the second one shows its window.
    void waitForSuccessor() {
        EXPECT_EQ(launcher->wait(std::chrono::seconds(20)), 0);
        EXPECT_TRUE(display::waitForWindow());
    }

    void closeSuccessor() const {
        EXPECT_EQ(launchers().size(), 1U);
        display::requestClose();
        EXPECT_TRUE(eventually([&] { return launchers().empty(); }));
    }
};

} // namespace ca::test
