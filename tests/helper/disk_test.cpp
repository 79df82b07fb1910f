// The helper on disks that fail, fill up or lose it half-way. strace makes its calls fail,
// and ends it before them.

#include "helper/installation.h"

#include <sys/mount.h>
#include <unistd.h>

using namespace ca::test;

static std::vector<std::string> underStrace(const fs::path& output, const std::string& injection) {
    const char* const seen = "trace=%file,write,fsync,exit_group"; // of the helper on the disk
    return {"strace",      "-qq", "-o", output, "-e",
            "signal=none", "-e",  seen, "-e",   "inject=" + injection};
}

TEST(HelperCalls, RetryWhatPassesAndNothingElse) {
    using Row = std::tuple<const char*, int, bool>;
    for (const auto& [injection, status, tidy] :
         {Row("link:error=EPERM", 0, true), // a volume without hard links: a copy is kept
          {"rename:error=EBUSY:when=1..2", 0, true},
          {"rename:error=EROFS", 16, true},
          {"unlink,rmdir:error=EACCES", 0, false}}) {
        SCOPED_TRACE(injection);
        const Installation i;
        EXPECT_EQ(i.run(i.arguments(), underStrace("/dev/null", injection)), status);
        i.expectStarted(status == 0 ? "new" : "old");
        EXPECT_EQ(!fs::exists(i.stage), tidy);
        if (status == 0) {
            EXPECT_TRUE(readFile(i.backup / launcherName) == standIn("old"));
        }
    }
    const Installation i;
    Installation::breakProgram(i.staged);
    EXPECT_EQ(i.run(i.arguments(), underStrace("/dev/null", "rename:error=EROFS:when=2")), 18);
}

TEST(HelperCalls, KeepAWholeLauncherWhereverItIsKilled) {
    // Every call on a file from the first one below the work folder on, as a call's name and
    // its how-manieth it is.
    std::vector<std::string> moments;
    {
        const Installation i;
        EXPECT_EQ(i.run(i.arguments(), underStrace(i.folder / "trace", "none:retval=0")), 0);
        std::ifstream trace(i.folder / "trace");
        std::map<std::string, int> counts;
        for (std::string line; std::getline(trace, line);) {
            const std::string call = line.substr(0, line.find('('));
            ++counts[call];
            if (call != "execve" &&
                (!moments.empty() || line.find(".coldanchor-update") != std::string::npos)) {
                moments.push_back(call + ":signal=KILL:when=" + std::to_string(counts[call]));
            }
        }
    }
    const auto first = [&](const char* call) {
        return std::find_if(moments.begin(), moments.end(),
                            [&](auto& moment) { return moment.starts_with(call); });
    };
    EXPECT_LT(first("fsync"), first("rename")); // no name without its bytes
    std::map<std::string, int> outcomes;
    for (const std::string& moment : moments) {
        SCOPED_TRACE(moment);
        const Installation i;
        EXPECT_EQ(i.run(i.arguments(), underStrace("/dev/null", moment)), 128 + SIGKILL);
        const bool replaced = readFile(i.target) == standIn("new");
        if (replaced) {
            EXPECT_TRUE(readFile(i.backup / launcherName) == standIn("old"));
        } else {
            EXPECT_TRUE(readFile(i.target) == standIn("old"));
            EXPECT_TRUE(readFile(i.staged) == standIn("new"));
        }
        ++outcomes[replaced ? "new" : "old"];
        const int again = i.run(); // what was interrupted can be carried out a second time
        EXPECT_EQ(again, replaced ? 13 : 0);
        EXPECT_TRUE(
            eventually([&] { return readFile(i.game / "started.txt").starts_with("1 here."); }));
        EXPECT_TRUE(readFile(i.target) == standIn("new"));
    }
    EXPECT_GT(outcomes["old"], 5);
    EXPECT_GT(outcomes["new"], 5);
}

TEST(HelperDisk, NeedsNoRoomToReplace) {
    for (const bool names : {false, true}) { // a full disk; one that takes no further name either
        const TemporaryFolder place;
        if (::mount("none", place.path().c_str(), "tmpfs", 0, "size=128m,nr_inodes=40") != 0) {
            GTEST_SKIP() << "only root can make a small disk";
        }
        const Installation i("game", launcherName, place.path());
        fs::create_symlink(i.folder / "report", i.game / "started.txt");
        change(place.path(), "cat /dev/zero >fill 2>/dev/null || true");
        if (names) {
            change(place.path(), "n=0; while touch fill$n 2>/dev/null; do n=$((n + 1)); done");
        }
        EXPECT_EQ(i.run(), names ? 15 : 0);
        i.expectStarted(names ? "old" : "new");
        EXPECT_EQ(::umount2(place.path().c_str(), MNT_DETACH), 0);
    }
}

TEST(HelperDisk, WaitsForWhoHoldsTheLauncherOpen) {
    if (programRunner().empty()) {
        GTEST_SKIP() << "an open file can be replaced here";
    }
    using Row = std::tuple<const char*, const char*, int>;
    for (const auto& [share, milliseconds, status] :
         {Row("0", "2000", 0), {"1", "600000", 16}, {"5", "600000", 0}}) {
        const Installation i;
        Process holder(
            commandOf(builtProgram("hold_file.exe"),
                      {shownPath(i.target), share, milliseconds, shownPath(i.folder / "held")}));
        EXPECT_TRUE(eventually([&] { return fs::exists(i.folder / "held"); }));
        const auto begin = std::chrono::steady_clock::now();
        EXPECT_EQ(i.run(), status);
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(40));
        i.expectStarted(status == 0 ? "new" : "old");
    }
}
