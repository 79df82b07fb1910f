#include "handover/machine.h"

using namespace ca::test;

namespace {

struct HandOver : Machine {
    HandOver() {
        put("next/" + launcherName, installation / launcherName);
        put(launcherName, tree / launcherName);
        put(helperName, tree / helperName);
        publish();
    }

    // Signs what the publisher's program refuses.
    void moveLauncherTo(const std::string& place) const {
        for (const fs::path& files : {tree, channel / "files"}) {
            fs::create_directories(files / place);
            fs::rename(files / launcherName, files / place / launcherName);
        }
        std::string manifest = readFile(channel / "manifest.json");
        manifest.insert(manifest.find(launcherName), place + "/");
        writeFile(channel / "manifest.json", manifest);
        writeFile(channel / "manifest.sig", ca::demo::signText(manifest, privateKey));
    }

    void expectNextLauncher() const {
        see(current());
        expectCurrent();
        EXPECT_TRUE(eventually([&] {
            for (const fs::directory_entry& entry :
                 fs::directory_iterator(installation / ".coldanchor-update")) {
                if (entry.path().filename().string().starts_with("stage-")) {
                    return false;
                }
            }
            return true;
        }));
        closeSuccessor();
    }
};

} // namespace

TEST(HandOver, EndsInTheNextLauncher) {
    HandOver s;
    // so it is the new one that swaps the launchers
    writeFile(s.installation / helperName, "an old helper");
    s.begin(start);
    s.waitForSuccessor();
    s.expectNextLauncher();
}

TEST(HandOver, TakesUpWhatWasInterrupted) {
    HandOver s; // only the launcher is old, and a helper that was killed has left its stage folder
    s.makeCurrent();
    s.put("next/" + launcherName, s.installation / launcherName);
    const fs::path left = s.installation / ".coldanchor-update/stage-1" / launcherName;
    writeFile(left, "half a launcher");
    s.begin(start);
    s.waitForSuccessor();
    s.see(current());
    EXPECT_EQ(readFile(left), "half a launcher");
    fs::remove_all(left.parent_path());
    s.expectNextLauncher();

    writeFile(left, "a helper that is killed after the swap leaves it, too");
    s.begin(start);
    s.see(current());
    fs::remove_all(left.parent_path());
    s.expectNextLauncher();
}

TEST(HandOver, ReplacesTheLauncherFromASubFolder) {
    HandOver s;
    s.moveLauncherTo("tools");
    s.serve(slowManifest);
    s.begin(start);
    EXPECT_EQ(s.launcher->wait(std::chrono::seconds(20)), 0);
    EXPECT_FALSE(fs::exists(s.installation / "tools"));
    // or each start would hand over again
    s.put(launcherName, s.installation / "tools" / launcherName);
    s.waitForSuccessor();
    s.expectNextLauncher();
    EXPECT_TRUE(readFile(s.installation / launcherName) ==
                readFile(s.tree / "tools" / launcherName));
}

TEST(HandOver, ReturnsToTheOldLauncherOnce) {
    Machine s; // whose channel offers what looks like a launcher and can't be run
    s.put(helperName, s.installation / helperName);
    writeFile(
        s.tree / launcherName,
        readFile(s.installation / launcherName).substr(0, programRunner().empty() ? 600 : 4096));
    s.publish();
    s.begin(start);
    s.waitForSuccessor();
    auto failed = look(Failed, "LAUNCHER SELF-UPDATE FAILED", "COULD NOT START UPDATE HELPER");
    failed.updateAvailable = true;
    failed.progressDone = failed.progressTotal = 1;
    s.see(failed);
    EXPECT_EQ(s.requests().size(), 8U);
    // where Wine, and it alone, tells that it can't run the new one
    fs::resize_file(s.folder / "output", 0);
    s.play();
}
