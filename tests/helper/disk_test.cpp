// The helper on disks that fail, fill up or lose it half-way. strace makes its calls fail, and ends it before them.

#include "helper/installation.h"

#include <regex>
#include <sys/mount.h>
#include <unistd.h>

using namespace ca::test;

namespace {

constexpr const char* fileCalls = "trace=%file,write,exit_group"; // what can be seen of the helper on the disk

std::vector<std::string> underStrace(const fs::path& output, const std::vector<std::string>& injections) {
    std::vector<std::string> command{"strace", "-qq", "-o", output, "-e", "signal=none", "-e", fileCalls};
    for (const std::string& injection : injections)
        command.insert(command.end(), {"-e", "inject=" + injection});
    return command;
}

// A small volume, where the tests run as root.
class Disk {
public:
    Disk(const fs::path& folder, const char* options)
        : folder_(folder),
          mounted_(fs::create_directories(folder) && ::mount("none", folder.c_str(), "tmpfs", 0, options) == 0) {}
    ~Disk() {
        if (mounted_)
            ::umount2(folder_.c_str(), MNT_DETACH);
    }
    bool isMounted() const { return mounted_; }
    void fill(bool names) const {
        std::ofstream file(folder_ / "fill", std::ios::binary);
        while (file << std::string(4096, 'f') << std::flush) {
        }
        for (int i = 0; names && std::ofstream(folder_ / ("fill" + std::to_string(i))); ++i) {
        }
    }

private:
    fs::path folder_;
    bool mounted_;
};

} // namespace

TEST(HelperDisk, RetriesWhatPassesAndNothingElse) {
    if (!programRunner().empty())
        GTEST_SKIP() << "strace doesn't know Windows' calls";
    struct Row {
        std::vector<std::string> injections;
        int status;
        const char* launcher;
        bool tidy;
    };
    for (const Row& row : {
             Row{{"link:error=EPERM"}, 0, "new", true}, // a volume without hard links: a copy is kept
             Row{{"rename:error=EBUSY:when=1..2"}, 0, "new", true},
             Row{{"rename:error=EROFS"}, 16, "old", false},
             Row{{"unlink,rmdir:error=EACCES"}, 0, "new", false},
         }) {
        SCOPED_TRACE(row.injections.front());
        const Installation i;
        EXPECT_EQ(i.run(i.arguments(), underStrace("/dev/null", row.injections)), row.status);
        i.expectStarted(row.launcher);
        EXPECT_EQ(!fs::exists(i.stage), row.tidy);
        EXPECT_TRUE(row.status != 0 || readFile(i.backup / launcherName) == standIn("old"));
    }
    const Installation i;
    Installation::put(i.staged, brokenProgram());
    EXPECT_EQ(i.run(i.arguments(), underStrace("/dev/null", {"rename:error=EROFS:when=2"})), 18);
}

TEST(HelperDisk, KeepsAWholeLauncherWhereverItIsKilled) {
    if (!programRunner().empty())
        GTEST_SKIP() << "strace doesn't know Windows' calls";
    // Every call on a file from the first one below the work folder on, as a call's name and its how-manieth it is.
    std::vector<std::string> moments;
    {
        const Installation i;
        EXPECT_EQ(i.run(i.arguments(), underStrace(i.folder / "trace", {})), 0);
        std::ifstream trace(i.folder / "trace");
        std::map<std::string, int> counts;
        for (std::string line; std::getline(trace, line);) {
            const std::string call = line.substr(0, line.find('('));
            ++counts[call];
            if (call != "execve" && (!moments.empty() || line.find(".coldanchor-update") != std::string::npos))
                moments.push_back(call + ":signal=KILL:when=" + std::to_string(counts[call]));
        }
    }
    std::map<std::string, int> outcomes;
    for (const std::string& moment : moments) {
        SCOPED_TRACE(moment);
        const Installation i;
        EXPECT_EQ(i.run(i.arguments(), underStrace("/dev/null", {moment})), 128 + SIGKILL);
        const bool replaced = readFile(i.target) == standIn("new");
        EXPECT_TRUE(replaced || (readFile(i.target) == standIn("old") && readFile(i.staged) == standIn("new")));
        EXPECT_TRUE(!replaced || readFile(i.backup / launcherName) == standIn("old"));
        ++outcomes[replaced ? "new" : "old"];
        const int again = i.run(); // what was interrupted can be carried out a second time
        EXPECT_EQ(again, replaced ? 13 : 0);
        EXPECT_TRUE(eventually([&] { return readFile(i.game / "started.txt").starts_with("1 here."); }));
        EXPECT_TRUE(readFile(i.target) == standIn("new"));
    }
    EXPECT_GT(outcomes["old"], 5);
    EXPECT_GT(outcomes["new"], 5);
}

TEST(HelperDisk, NeedsNoRoomToReplace) {
    for (const bool names : {false, true}) { // a full disk; one that takes no further name either
        const TemporaryFolder place;
        const Disk disk(place / "disk", "size=128m,nr_inodes=40");
        if (!disk.isMounted())
            GTEST_SKIP() << "only root can make a small disk";
        const Installation i("game", launcherName, place / "disk");
        fs::create_symlink(place / "report", i.game / "started.txt");
        disk.fill(names);
        EXPECT_EQ(i.run(), names ? 15 : 0);
        i.expectStarted(names ? "old" : "new");
    }
}

TEST(HelperDisk, WaitsForWhoHoldsTheLauncherOpen) {
    if (programRunner().empty())
        GTEST_SKIP() << "an open file can be replaced here";
    struct Row {
        const char *share, *milliseconds;
        int status;
    };
    for (const Row& row : {Row{"0", "2000", 0}, Row{"1", "600000", 16}}) {
        const Installation i;
        std::vector<std::string> command = programRunner();
        command.insert(command.end(), {builtProgram("hold_file.exe"), shownPath(i.target), row.share, row.milliseconds,
                                       shownPath(i.folder / "held")});
        Process holder(command);
        EXPECT_TRUE(eventually([&] { return fs::exists(i.folder / "held"); }));
        const auto begin = std::chrono::steady_clock::now();
        EXPECT_EQ(i.run(), row.status);
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(40));
        i.expectStarted(row.status == 0 ? "new" : "old");
    }
}
