#include "launcher/layout.h"
#include "launcher/screen.h"
#include "support/canvas.h"

#include "temporary_folder.h"

#include <gtest/gtest.h>

namespace ca::launcher {
const std::string_view launcherVersion = "7.6.5";
}

using namespace ca::launcher;
using ca::job::JobState;
using ca::test::Colour;

namespace {

constexpr Colour leftHalf = 0x080D11, rightHalf = 0x070B0E, outerCard = 0x0C1318, innerCard = 0x111A1F;
constexpr Colour smallButton = 0x1F2D36, value = 0xDAE5E0, heading = 0xDDC476, body = 0xA6BBB5;

} // namespace

class Screen : public testing::Test {
protected:
    Screen() { ca::test::writeFile(folder / "data/game_version", "1.4.1\n"); }

    void draw() { drawScreen(screen.renderer, folder.path(), snapshot, "Cold Anchor v1.4.1\nADDED\n- a thing"); }

    bool onLeft(float x, float y, const std::string& text, float scale, Colour colour) {
        return screen.hasText(x, y, text, scale, colour, innerCard);
    }
    bool onRight(float x, float y, const std::string& text, float scale, Colour colour) {
        return screen.hasText(x, y, text, scale, colour, rightHalf);
    }

    const ca::test::TemporaryFolder folder;
    const ca::test::Canvas screen;
    ca::job::SharedSnapshot snapshot;
};

TEST_F(Screen, ShowsWhatNeverChanges) {
    draw();
    using Corners = std::tuple<int, int, int, int, Colour>;
    for (const auto& [left, top, right, bottom, colour] :
         {Corners(0, 0, 687, 639, leftHalf), Corners(688, 0, 1039, 639, rightHalf),
          Corners(28, 28, 659, 611, outerCard), Corners(44, 44, 643, 595, innerCard)})
        EXPECT_TRUE(screen.at(left, top) == colour && screen.at(right, bottom) == colour) << left;
    EXPECT_TRUE(screen.isFilled(58, 174, 570, 1, 0x486E65) && screen.isFilled(58, 175, 570, 1, innerCard));
    EXPECT_TRUE(onLeft(58, 64, "COLD ANCHOR", 2.45f, 0xE13D30));
    EXPECT_TRUE(onLeft(60, 104, "EXTRACT OR DIE // ONLINE WORLD", 0.92f, body));
    EXPECT_TRUE(onLeft(60, 145, "PATCH NOTES // v1.4.1", 1.25f, 0xE8ECE2));
    EXPECT_TRUE(onLeft(60, 566, "PATCH NOTES ARE BUNDLED WITH EVERY RELEASE", 0.72f, 0x698B84));
    EXPECT_TRUE(onRight(720, 72, "GAME STATUS", 1.45f, 0xE2ECE8));
    EXPECT_TRUE(onRight(820, 245, "1.4.1", 0.82f, value) && onRight(820, 270, "CHECKING", 0.82f, value));
    EXPECT_TRUE(onRight(720, 594, "ENTER = PLAY // LAUNCHER v7.6.5", 0.72f, 0x89A39F));
    EXPECT_FALSE(onRight(720, 594, "ENTER = PLAY // LAUNCHER v7.6.6", 0.72f, 0x89A39F));
}

TEST_F(Screen, ShowsTheNotesAndTheirHeadings) {
    draw();
    const auto row = [&](int i, const char* text, Colour colour) {
        return onLeft(60, 193.0f + 20.0f * static_cast<float>(i), text, 0.78f, colour);
    };
    EXPECT_TRUE(row(0, "Cold Anchor v1.4.1", heading) && row(1, "ADDED", heading) && row(2, "- a thing", body));
    EXPECT_TRUE(row(3, "", innerCard));

    std::string notes;
    for (int i = 0; i < 100; ++i)
        notes += "row " + std::to_string(i) + "\n";
    snapshot.patchNotes = std::make_shared<const std::string>(notes);
    draw();
    EXPECT_TRUE(row(17, "row 17", body));
    EXPECT_TRUE(screen.isFilled(60, 193 + 18 * 20, 500, 8, innerCard)); // the nineteenth never shows
}

TEST_F(Screen, ColoursTheHeadlineByState) {
    snapshot.statusText = "READY TO PLAY";
    snapshot.detailText = "update_install_failed:one/word/that/is/longer/than/the/panel one two\nthree\nfour\nfive";
    snapshot.latestVersion = "1.4.2";
    using Row = std::pair<JobState, Colour>;
    for (const auto& [state, colour] : {Row(JobState::Starting, 0xB7E0CD), Row(JobState::Checking, 0xB7E0CD),
                                        Row(JobState::Ready, 0xB7E0CD), Row(JobState::ServiceUnavailable, 0xF2BE6E),
                                        Row(JobState::Failed, 0xFF685C), Row(JobState::HandingOver, 0xB7E0CD)}) {
        snapshot.jobState = state;
        draw();
        EXPECT_TRUE(onRight(720, 118, "READY TO PLAY", 1.02f, colour)) << static_cast<int>(state);
    }
    for (float y = 154; const char* text :
                        {"update_install_failed:one/word/that/is/longer/than/the/panel", "one two", "three", "four"}) {
        EXPECT_TRUE(onRight(720, y, text, 0.72f, 0x8FA39E)) << text;
        y += 17;
    }
    EXPECT_TRUE(screen.isFilled(720, 154 + 4 * 17, 320, 8, rightHalf)); // a fifth row is cut off
    EXPECT_TRUE(onRight(820, 270, "1.4.2", 0.82f, value));
}

TEST_F(Screen, ShowsProgressOrTheChannel) {
    draw();
    EXPECT_TRUE(onRight(720, 342, "SIGNED UPDATE CHANNEL // STABLE", 0.72f, 0x799B94));
    snapshot.updateAvailable = true;
    draw();
    EXPECT_TRUE(onRight(720, 342, "UPDATE AVAILABLE", 0.72f, 0xE1AF53));
    EXPECT_TRUE(screen.isFilled(720, 322, 260, 10, rightHalf));

    constexpr std::uint64_t huge = 1ULL << 40;
    using Row = std::tuple<std::uint64_t, std::uint64_t, int, int>;
    for (const auto& [done, total, percent, width] :
         {Row(0, 1000, 0, 0), Row(500, 1000, 50, 130), Row(999, 1000, 99, 259), Row(1000, 1000, 100, 260),
          Row(2000, 1000, 100, 260), Row(huge / 4, huge, 25, 65)}) {
        snapshot.progressDone = done;
        snapshot.progressTotal = total;
        draw();
        EXPECT_TRUE(onRight(720, 342, "UPDATE " + std::to_string(percent) + "%", 0.82f, 0xB2C3BD)) << done;
        EXPECT_TRUE(screen.isFilled(720, 322, width, 10, 0xC0352B)) << done;
        EXPECT_TRUE(screen.isFilled(721 + width, 322, std::max(259 - width, 0), 10, 0x1F2B32)) << done;
    }
}

TEST_F(Screen, ShowsTheButtonsInEveryForm) {
    struct Form {
        bool updateRequired, busy;
        Colour fill;
        const char* label;
        float x, y, scale;
        Colour text;
        const char* refresh;
    };
    for (const Form& form : {Form{true, true, 0x6F231F, "UPDATE REQUIRED", 750, 535, 1.25f, 0xFFE6D8, "WAIT"},
                             Form{true, false, 0x6F231F, "UPDATE REQUIRED", 750, 535, 1.25f, 0xFFE6D8, "REFRESH"},
                             Form{false, true, 0x263036, "PLEASE WAIT", 790, 535, 1.25f, 0xD4DEDC, "WAIT"},
                             Form{false, false, 0x9D261F, "PLAY", 818, 533, 1.65f, 0xFFF4E2, "REFRESH"}}) {
        SCOPED_TRACE(form.label);
        snapshot.updateRequired = form.updateRequired;
        snapshot.busy = form.busy;
        draw();
        EXPECT_TRUE(screen.isFilled(720, 515, 260, 17, form.fill) && screen.isFilled(720, 548, 260, 29, form.fill));
        EXPECT_TRUE(screen.hasText(form.x, form.y, form.label, form.scale, form.text, form.fill, 980));
        EXPECT_TRUE(screen.isFilled(720, 452, 126, 13, smallButton) && screen.isFilled(854, 452, 126, 13, smallButton));
        for (const auto& [x, y] : {std::pair(719, 515), std::pair(980, 576), std::pair(846, 452)})
            EXPECT_EQ(screen.at(x, y), rightHalf);
        EXPECT_TRUE(screen.hasText(736, 466, "REPAIR", 0.95f, 0xE1EBE8, smallButton, 846));
        EXPECT_TRUE(screen.hasText(870, 466, form.refresh, 0.95f, 0xE1EBE8, smallButton, 980));
    }
}

TEST(Layout, EdgesBelongToTheButtons) {
    using Row = std::tuple<SDL_FRect, float, float, bool>;
    for (const auto& [button, x, y, inside] :
         {Row(repairButton, 720, 452, true), Row(repairButton, 846, 494, true), Row(repairButton, 720, 494, true),
          Row(repairButton, 719.5f, 460, false), Row(repairButton, 846.5f, 460, false),
          Row(repairButton, 730, 451.5f, false), Row(repairButton, 730, 494.5f, false),
          Row(refreshButton, 854, 452, true), Row(refreshButton, 980, 494, true), Row(mainButton, 720, 515, true),
          Row(mainButton, 980, 577, true)})
        EXPECT_EQ(contains(button, x, y), inside) << x << ", " << y;
}
