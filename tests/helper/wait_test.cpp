#include "helper/installation.h"
#include "helper/wait.h"

#include <unistd.h>

using namespace ca::test;

TEST(HelperWait, EndsWithTheProcessOrAtItsLimit) {
    Process ended({"true"});
    ended.wait(std::chrono::seconds(20));
    EXPECT_TRUE(ca::helper::waitForEnd(static_cast<DWORD>(ended.id()), 0));
    EXPECT_TRUE(ca::helper::waitForEnd(static_cast<DWORD>(std::stoul(noProcess)), 0));
    EXPECT_FALSE(ca::helper::waitForEnd(static_cast<DWORD>(::getppid()), 50));
    Process younger({"sleep", "600"}); // has taken the number of the process that was meant
    EXPECT_TRUE(ca::helper::waitForEnd(static_cast<DWORD>(younger.id()), 600'000));
}

TEST(HelperWait, TouchesNothingBeforeNorThroughALinkPutThereMeanwhile) {
    for (const bool linked : {false, true}) {
        const Installation i;
        Process launcher({"sleep", "600"});
        auto words = i.arguments();
        words[1] = std::to_string(launcher.id());
        const auto before = i.contents();
        const auto helper = i.begin(words);
        const fs::path open = "/proc/" + std::to_string(helper->id()) + "/fd";
        EXPECT_TRUE(eventually([&] {
            const Contents files = contentsOf(open);
            return std::any_of(files.begin(), files.end(), [](const auto& file) {
                return file.second == "anon_inode:[pidfd]";
            });
        }));
        EXPECT_EQ(differing(i.contents(), before), Paths());
        EXPECT_FALSE(helper->wait(std::chrono::milliseconds(0)));
        if (linked) {
            fs::rename(i.game / ".coldanchor-update", i.folder / "outside/work");
            fs::create_directory_symlink(i.folder / "outside/work", i.game / ".coldanchor-update");
        }
        const auto changed = i.contents();
        launcher.stop();
        EXPECT_EQ(helper->wait(std::chrono::seconds(20)), linked ? 12 : 0);
        if (linked) {
            EXPECT_EQ(differing(i.contents(), changed), Paths());
        } else {
            i.expectStarted("new");
        }
    }
}
