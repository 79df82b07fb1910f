// What a player does with the mouse, the keyboard and the window itself.
#include "program/scenario.h"

#include <random>

using namespace ca::test;
using Points = std::initializer_list<std::pair<int, int>>;

TEST(Window, TakesClicksUpToTheEdgesOfItsButtons) {
    Scenario s;
    s.makeCurrent();
    s.begin(start);
    s.see(current());
    // None of these starts the game, or the launcher would be gone.
    for (const auto& [x, y] : Points{{719, 540}, {981, 540}, {850, 514}, {850, 578}}) {
        display::click(x, y);
    }
    display::click(850, 550, 3);
    display::press("KP_Enter");
    s.begin(refresh);
    EXPECT_TRUE(eventually([&] { return s.requests().size() == 4; }));
    s.see(current());

    fs::remove(s.installation / "ColdAnchor.exe");
    s.remember();
    const auto missing =
        look(Failed, "GAME EXECUTABLE MISSING", shownPath(s.installation / "ColdAnchor.exe"));
    std::size_t requests = 4;
    for (const auto& [x, y] : Points{{720, 452}, {846, 494}, {854, 452}, {980, 494}}) {
        SCOPED_TRACE(testing::Message() << x << ", " << y);
        for (const auto& [missX, missY] : Points{{719, 470},
                                                 {847, 470},
                                                 {850, 470},
                                                 {853, 470},
                                                 {981, 470},
                                                 {780, 451},
                                                 {780, 495},
                                                 {920, 500}}) {
            display::click(missX, missY);
        }
        display::click(x, y, 3);
        // A job that one of these began would take this click's effect, or
        // show in the server's log.
        y == 452 ? display::click(720, 515) : display::click(980, 577);
        s.see(missing);
        EXPECT_EQ(s.requests().size(), requests);
        display::click(x, y);
        s.see(current());
        EXPECT_EQ(s.requests().size(), requests += 2);
    }
    display::press("Return");
    s.see(missing);
    EXPECT_EQ(s.changes(), Paths());
    s.close();
}

// At any moment of a download that would go on for a minute. The amount that has arrived
// decides, not the time.
TEST(Window, ClosesAtOnceDuringAJob) {
    Scenario s;
    writeFile(s.tree / "data/huge.pak", {});
    fs::resize_file(s.tree / "data/huge.pak", 512 << 20);
    s.publish();
    s.serve("limit_rate 8m; sendfile_max_chunk 16k;");
    const fs::path work = s.installation / ".coldanchor-update";
    const auto arrived = [&work] {
        std::error_code ignored;
        std::uintmax_t size = 0;
        for (const fs::directory_entry& file : fs::recursive_directory_iterator(work, ignored)) {
            size += file.is_regular_file(ignored) ? file.file_size(ignored) : 0;
        }
        return size;
    };
    std::minstd_rand random(20240117);
    const int rounds = programRunner().empty() ? 200 : 40; // a start takes a second under Wine
    for (int i = 0; i < rounds && !HasFailure(); ++i) {
        const std::uintmax_t amount = i % 8 == 0 ? 0 : random() % 600'000;
        SCOPED_TRACE(testing::Message() << amount << " bytes");
        s.begin(start);
        EXPECT_TRUE(eventually([&] { return arrived() >= amount; }));
        s.close();
        fs::remove_all(work);
        EXPECT_EQ(s.changes(), Paths());
    }
}
