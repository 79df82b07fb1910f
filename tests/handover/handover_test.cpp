#include "handover/machine.h"

using namespace ca::test;

TEST(HandOver, EndsInTheNextLauncher) {
    Machine s;
    s.put("next/" + launcherName, s.installation / launcherName);
    s.put(launcherName, s.tree / launcherName);
    s.put(helperName, s.tree / helperName);
    s.publish();
    // so it is the new one that swaps the launchers
    writeFile(s.installation / helperName, "an old helper");
    const fs::path work = s.installation / ".coldanchor-update";
    writeFile(work / "stage-1" / launcherName, "left by a helper that was killed");
    s.begin(start);
    s.waitForSuccessor();
    s.see(current());
    s.expectCurrent();
    const auto isStage = [](const fs::directory_entry& entry) {
        return entry.path().filename().string().starts_with("stage-");
    };
    EXPECT_TRUE(eventually([&] {
        return std::count_if(fs::directory_iterator(work), fs::directory_iterator(), isStage) == 1;
    }));
    EXPECT_EQ(readFile(work / "stage-1" / launcherName), "left by a helper that was killed");
    s.closeSuccessor();
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
