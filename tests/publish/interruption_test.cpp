// A release that is ended, or meets a failing disk, at each of its operations in turn.
#include "publish/studio.h"

#include <csignal>
#include <map>

using namespace ca::test;

namespace {

// What changes the disk, and what stands between two such changes.
constexpr const char* calls =
    "trace=open,openat,write,ftruncate,fchmod,mkdir,rmdir,rename,link,linkat,symlink,"
    "unlink,unlinkat,lseek,fsync,syncfs,flock,exit_group";

Lines underStrace(const fs::path& output, const std::string& injection) {
    Lines words{"strace", "-f", "-y", "-qq", "-o", output, "-e", "signal=none", "-e", calls};
    if (!injection.empty()) {
        words.insert(words.end(), {"-e", "inject=" + injection});
    }
    return words;
}

// A channel whose live release is 1.4.2, and a tree that differs from it.
struct Published : Studio {
    Published() {
        options.keep = 0;
        expectRelease();
        put("data/first.dat", "second");
        put("data/new.dat", std::string(300'000, '\0') + "new");
    }
    Lines words() const {
        return {"release", tree, "--version", "1.4.3", "--key",  options.privateKey,
                "--to",    root, "--keep",    "0",     "--jobs", "1"};
    }
    // Which release players get; fails the test unless it is whole.
    std::string offered() const {
        const ca::publisher::CheckResult seen = check();
        EXPECT_TRUE(seen.findings.empty())
            << seen.findings.front().where << " " << seen.findings.front().what;
        return seen.manifest.version;
    }
    // Every operation from the first one below the root on, as a call's name and
    // its how-manieth it is.
    Lines moments() {
        Lines found;
        EXPECT_EQ(run(words(), underStrace(folder / "trace", "")), 0) << output;
        std::ifstream trace(folder / "trace");
        std::map<std::string, int> counts;
        for (std::string line; std::getline(trace, line);) {
            line.erase(0, line.find_first_not_of("0123456789 "));
            const std::string call = line.substr(0, line.find('('));
            ++counts[call];
            const bool isHarmless =
                (call == "openat" && line.find("O_CREAT") == std::string::npos) ||
                // which a sanitizer writes to
                line.find("<pipe:") != std::string::npos;
            if ((!found.empty() || line.find("/channel") != std::string::npos) && !isHarmless) {
                found.push_back(call + ":when=" + std::to_string(counts[call]));
            }
        }
        return found;
    }
};

} // namespace

TEST(Interruption, LeavesAWholeReleaseAtEveryOperation) {
    const Lines moments = Published().moments();
    std::map<std::string, int> outcomes;
    for (const std::string& moment : moments) {
        SCOPED_TRACE(moment);
        Published p;
        EXPECT_EQ(p.run(p.words(), underStrace("/dev/null", moment + ":signal=KILL")),
                  128 + SIGKILL)
            << p.output;
        ++outcomes[p.offered()];
        p.options.version = "1.4.4"; // the next run finds its way, and sweeps up
        p.expectRelease();
        EXPECT_EQ(p.offered(), "1.4.4");
        for (const char* folder : {".releases/stable", "stable"}) {
            EXPECT_EQ(std::distance(fs::directory_iterator(p.root / folder), {}), 1);
        }

        // which may fail
        const bool onlySweeps = moment.starts_with("unlink") || moment.starts_with("rmdir");
        if (onlySweeps || moment.starts_with("exit_group")) {
            continue;
        }
        Published full;
        const int status =
            full.run(full.words(), underStrace("/dev/null", moment + ":error=ENOSPC"));
        if (status == 0) {
            EXPECT_EQ(full.offered(), "1.4.3");
        } else {
            EXPECT_EQ(status, 1);
            expectPart(full.output, "No space left");
            full.offered();
        }
    }
    EXPECT_EQ(outcomes.size(), 2U);
    EXPECT_GT(outcomes["1.4.2"], 20);
    EXPECT_GT(outcomes["1.4.3"], 5);
}
