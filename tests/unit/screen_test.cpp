#include "launcher/layout.h"
#include "launcher/screen.h"
#include "support/canvas.h"

#include "temporary_folder.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace ca::launcher {
const std::string_view launcherVersion = "7.6.5";
}

using namespace ca::launcher;
using ca::job::JobState;
using ca::test::Colour;

static constexpr Colour innerCard = 0x111A1F, rightHalf = 0x070B0E, heading = 0xDDC476,
                        body = 0xA6BBB5;
static constexpr Colour label = 0x719089, value = 0xDAE5E0;

// What is expected is drawn step by step on a canvas of its own, beginning with the
// launcher's first look.
class Screen : public testing::Test {
protected:
    Screen() {
        ca::test::writeFile(folder / "data/game_version", "1.4.1\n");
        expected.fill({0, 0, 688, 640}, 0x080D11);
        expected.fill({688, 0, 352, 640}, rightHalf);
        expected.fill({28, 28, 632, 584}, 0x0C1318);
        expected.fill({44, 44, 600, 552}, innerCard);
        expected.fill({58, 174, 570, 1}, 0x486E65);
        expected.write(58, 64, "COLD ANCHOR", 2.45f, 0xE13D30);
        expected.write(60, 104, "EXTRACT OR DIE // ONLINE WORLD", 0.92f, body);
        expected.write(60, 145, "PATCH NOTES // v1.4.1", 1.25f, 0xE8ECE2);
        expected.write(60, 193, "Cold Anchor v1.4.1", 0.78f, heading);
        expected.write(60, 213, "ADDED", 0.78f, heading);
        expected.write(60, 233, "- a thing", 0.78f, body);
        expected.write(60, 566, "PATCH NOTES ARE BUNDLED WITH EVERY RELEASE", 0.72f, 0x698B84);
        expected.write(720, 72, "GAME STATUS", 1.45f, 0xE2ECE8);
        expected.write(720, 118, "STARTING...", 1.02f, 0xB7E0CD);
        expected.write(720, 245, "INSTALLED", 0.76f, label);
        expected.write(820, 245, "1.4.1", 0.82f, value);
        expected.write(720, 270, "LATEST", 0.76f, label);
        expected.write(820, 270, "CHECKING", 0.82f, value);
        expected.write(720, 342, "SIGNED UPDATE CHANNEL // STABLE", 0.72f, 0x799B94);
        expected.write(720, 594, "ENTER = PLAY // LAUNCHER v7.6.5", 0.72f, 0x89A39F);
        drawButtons("REFRESH", 0x9D261F, 818, 533, "PLAY", 1.65f, 0xFFF4E2);
    }

    void drawButtons(const char* refresh, Colour colour, float x, float y, const char* text,
                     float scale, Colour ink) {
        expected.fill({720, 452, 126, 42}, 0x1F2D36);
        expected.write(736, 466, "REPAIR", 0.95f, 0xE1EBE8);
        expected.fill({854, 452, 126, 42}, 0x1F2D36);
        expected.write(870, 466, refresh, 0.95f, 0xE1EBE8);
        expected.fill({720, 515, 260, 62}, colour);
        expected.write(x, y, text, scale, ink);
    }
    // A row of text in place of what stood there.
    void replace(float x, float y, const std::string& text, float scale, Colour colour) {
        x < 688 ? expected.fill({x, y, 560, 12}, innerCard)
                : expected.fill({x, y, 320, 12}, rightHalf);
        expected.write(x, y, text, scale, colour);
    }
    void expectIt() {
        drawScreen(screen.renderer, folder.path(), snapshot,
                   "Cold Anchor v1.4.1\nADDED\n- a thing");
        const ca::test::Picture drawn = screen.picture(), wanted = expected.picture();
        const auto same =
            std::mismatch(drawn.begin(), drawn.end(), wanted.begin()).first - drawn.begin();
        EXPECT_EQ(same, 1040 * 640)
            << "other pixels from " << same % 1040 << ", " << same / 1040 << " on";
    }

    const ca::test::TemporaryFolder folder;
    const ca::test::Canvas screen, expected;
    ca::job::SharedSnapshot snapshot;
};

TEST_F(Screen, ShowsTheFirstRowsOfTheNotes) {
    expectIt();
    std::string notes;
    for (int i = 0; i < 100; ++i) {
        notes += "row " + std::to_string(i) + "\n";
    }
    snapshot.patchNotes = std::make_shared<const std::string>(notes);
    for (int i = 0; i < 18; ++i) {
        replace(60, 193.0f + 20.0f * static_cast<float>(i), "row " + std::to_string(i), 0.78f,
                body);
    }
    expectIt();
}

TEST_F(Screen, ColoursTheHeadlineByState) {
    snapshot.statusText = "READY TO PLAY";
    snapshot.detailText =
        "update_install_failed:one/word/that/is/longer/than/the/panel one two\nthree\nfour\nfive";
    float y = 154;
    for (const char* row : {"update_install_failed:one/word/that/is/longer/than/the/panel",
                            "one two", "three", "four"}) {
        expected.write(720, y, row, 0.72f, 0x8FA39E);
        y += 17;
    }
    snapshot.latestVersion = "1.4.2";
    replace(820, 270, "1.4.2", 0.82f, value);
    using Row = std::pair<JobState, Colour>;
    for (const auto& [state, colour] :
         {Row(JobState::Starting, 0xB7E0CD), Row(JobState::Checking, 0xB7E0CD),
          Row(JobState::Ready, 0xB7E0CD), Row(JobState::ServiceUnavailable, 0xF2BE6E),
          Row(JobState::Failed, 0xFF685C), Row(JobState::HandingOver, 0xB7E0CD)}) {
        SCOPED_TRACE(static_cast<int>(state));
        snapshot.jobState = state;
        replace(720, 118, "READY TO PLAY", 1.02f, colour);
        expectIt();
    }
}

TEST_F(Screen, ShowsProgressOrTheChannel) {
    snapshot.updateAvailable = true;
    replace(720, 342, "UPDATE AVAILABLE", 0.72f, 0xE1AF53);
    expectIt();
    constexpr std::uint64_t huge = 1ULL << 40;
    using Row = std::tuple<std::uint64_t, std::uint64_t, const char*, float>;
    for (const auto& [done, total, text, width] :
         {Row(0, 1000, "UPDATE 0%", 0.0f), Row(500, 1000, "UPDATE 50%", 130.0f),
          Row(999, 1000, "UPDATE 99%", 259.74f), Row(2000, 1000, "UPDATE 100%", 260.0f),
          Row(huge / 4, huge, "UPDATE 25%", 65.0f)}) {
        SCOPED_TRACE(text);
        snapshot.progressDone = done;
        snapshot.progressTotal = total;
        expected.fill({720, 322, 260, 10}, 0x1F2B32);
        expected.fill({720, 322, width, 10}, 0xC0352B);
        replace(720, 342, text, 0.82f, 0xB2C3BD);
        expectIt();
    }
}

TEST_F(Screen, ShowsTheButtonsInEveryForm) {
    snapshot.busy = true;
    drawButtons("WAIT", 0x263036, 790, 535, "PLEASE WAIT", 1.25f, 0xD4DEDC);
    expectIt();
    snapshot.updateRequired = true;
    drawButtons("WAIT", 0x6F231F, 750, 535, "UPDATE REQUIRED", 1.25f, 0xFFE6D8);
    expectIt();
    snapshot.busy = false;
    drawButtons("REFRESH", 0x6F231F, 750, 535, "UPDATE REQUIRED", 1.25f, 0xFFE6D8);
    expectIt();
}

TEST(Layout, EdgesBelongToTheButtons) {
    using Row = std::tuple<float, float, bool>;
    for (const auto& [x, y, inside] :
         {Row(720, 452, true), Row(846, 494, true), Row(719.5f, 460, false),
          Row(846.5f, 460, false), Row(730, 451.5f, false), Row(730, 494.5f, false)}) {
        EXPECT_EQ(contains(repairButton, x, y), inside) << x << ", " << y;
    }
}
