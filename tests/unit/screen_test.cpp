#include "launcher/layout.h"
#include "launcher/screen.h"
#include "support/screen_pixels.h"

#include "temporary_folder.h"

#include <gtest/gtest.h>

namespace ca::launcher {
const std::string_view launcherVersion = "7.6.5";
}

using namespace ca::launcher;
using ca::job::JobState;
using ca::test::Colour;

namespace {

constexpr Colour rgb(unsigned red, unsigned green, unsigned blue) {
    return red << 16 | green << 8 | blue;
}

constexpr Colour rightHalf = rgb(7, 11, 14);
constexpr Colour innerCard = rgb(17, 26, 31);
constexpr Colour smallButton = rgb(31, 45, 54);

} // namespace

class Screen : public testing::Test {
protected:
    Screen() { ca::test::writeFile(folder / "data/game_version", "1.4.1\n"); }
    ~Screen() override {
        SDL_DestroyRenderer(renderer);
        SDL_DestroySurface(surface);
    }

    void draw() {
        drawScreen(renderer, folder.path(), snapshot, localNotes);
        screen = ca::test::readPixels(surface);
    }

    bool onRight(float x, float y, const std::string& text, float scale, Colour colour) {
        return screen.hasText(x, y, text, scale, colour, rightHalf);
    }

    const ca::test::TemporaryFolder folder;
    SDL_Surface* surface = SDL_CreateSurface(windowWidth, windowHeight, SDL_PIXELFORMAT_XRGB8888);
    SDL_Renderer* renderer = SDL_CreateSoftwareRenderer(surface);
    ca::job::SharedSnapshot snapshot;
    std::string localNotes = "Cold Anchor v1.4.1\nADDED\n- a thing";
    ca::test::ScreenPixels screen;
};

TEST_F(Screen, ShowsWhatNeverChanges) {
    draw();
    EXPECT_EQ(screen.at(0, 0), rgb(8, 13, 17));
    EXPECT_EQ(screen.at(687, 639), rgb(8, 13, 17));
    EXPECT_EQ(screen.at(688, 0), rightHalf);
    EXPECT_EQ(screen.at(1039, 639), rightHalf);
    EXPECT_EQ(screen.at(28, 28), rgb(12, 19, 24));
    EXPECT_EQ(screen.at(659, 611), rgb(12, 19, 24));
    EXPECT_EQ(screen.at(44, 44), innerCard);
    EXPECT_EQ(screen.at(643, 595), innerCard);
    EXPECT_TRUE(screen.isFilled(58, 174, 570, 1, rgb(72, 110, 101)));
    EXPECT_TRUE(screen.isFilled(58, 175, 570, 1, innerCard));
    EXPECT_TRUE(screen.hasText(58, 64, "COLD ANCHOR", 2.45f, rgb(225, 61, 48), innerCard));
    EXPECT_TRUE(screen.hasText(60, 104, "EXTRACT OR DIE // ONLINE WORLD", 0.92f, rgb(166, 187, 181), innerCard));
    EXPECT_TRUE(screen.hasText(60, 145, "PATCH NOTES // v1.4.1", 1.25f, rgb(232, 236, 226), innerCard));
    EXPECT_TRUE(
        screen.hasText(60, 566, "PATCH NOTES ARE BUNDLED WITH EVERY RELEASE", 0.72f, rgb(105, 139, 132), innerCard));
    EXPECT_TRUE(onRight(720, 72, "GAME STATUS", 1.45f, rgb(226, 236, 232)));
    EXPECT_TRUE(onRight(820, 245, "1.4.1", 0.82f, rgb(218, 229, 224)));
    EXPECT_TRUE(onRight(820, 270, "CHECKING", 0.82f, rgb(218, 229, 224)));
    EXPECT_TRUE(onRight(720, 594, "ENTER = PLAY // LAUNCHER v7.6.5", 0.72f, rgb(137, 163, 159)));
    EXPECT_FALSE(onRight(720, 594, "ENTER = PLAY // LAUNCHER v7.6.6", 0.72f, rgb(137, 163, 159)));
}

TEST_F(Screen, ShowsTheNotesAndTheirHeadings) {
    draw();
    const auto row = [&](int i, const char* text, Colour colour) {
        return screen.hasText(60, 193.0f + 20.0f * static_cast<float>(i), text, 0.78f, colour, innerCard);
    };
    EXPECT_TRUE(row(0, "Cold Anchor v1.4.1", rgb(221, 196, 118)));
    EXPECT_TRUE(row(1, "ADDED", rgb(221, 196, 118)));
    EXPECT_TRUE(row(2, "- a thing", rgb(166, 187, 181)));
    EXPECT_TRUE(row(3, "", innerCard));

    std::string notes;
    for (int i = 0; i < 100; ++i)
        notes += "row " + std::to_string(i) + "\n";
    snapshot.patchNotes = std::make_shared<const std::string>(notes);
    draw();
    EXPECT_TRUE(row(17, "row 17", rgb(166, 187, 181)));
    EXPECT_TRUE(screen.isFilled(60, 193 + 18 * 20, 500, 8, innerCard)); // the nineteenth never shows
}

TEST_F(Screen, ColoursTheHeadlineByState) {
    snapshot.statusText = "READY TO PLAY";
    snapshot.detailText = "update_install_failed:one/word/that/is/longer/than/the/panel one two\nthree\nfour\nfive";
    snapshot.latestVersion = "1.4.2";
    for (const auto& [state, colour] :
         std::initializer_list<std::pair<JobState, Colour>>{{JobState::Starting, rgb(183, 224, 205)},
                                                            {JobState::Checking, rgb(183, 224, 205)},
                                                            {JobState::Ready, rgb(183, 224, 205)},
                                                            {JobState::ServiceUnavailable, rgb(242, 190, 110)},
                                                            {JobState::Failed, rgb(255, 104, 92)},
                                                            {JobState::HandingOver, rgb(183, 224, 205)}}) {
        snapshot.jobState = state;
        draw();
        EXPECT_TRUE(onRight(720, 118, "READY TO PLAY", 1.02f, colour)) << static_cast<int>(state);
    }
    float y = 154;
    for (const char* text :
         {"update_install_failed:one/word/that/is/longer/than/the/panel", "one two", "three", "four"}) {
        EXPECT_TRUE(onRight(720, y, text, 0.72f, rgb(143, 163, 158))) << text;
        y += 17;
    }
    EXPECT_TRUE(screen.isFilled(720, 154 + 4 * 17, 320, 8, rightHalf)); // a fifth row is cut off
    EXPECT_TRUE(onRight(820, 270, "1.4.2", 0.82f, rgb(218, 229, 224)));
}

TEST_F(Screen, ShowsProgressOrTheChannel) {
    draw();
    EXPECT_TRUE(onRight(720, 342, "SIGNED UPDATE CHANNEL // STABLE", 0.72f, rgb(121, 155, 148)));
    snapshot.updateAvailable = true;
    draw();
    EXPECT_TRUE(onRight(720, 342, "UPDATE AVAILABLE", 0.72f, rgb(225, 175, 83)));
    EXPECT_TRUE(screen.isFilled(720, 322, 260, 10, rightHalf));

    constexpr std::uint64_t huge = 1ULL << 40;
    for (const auto& [done, total, percent, width] :
         std::initializer_list<std::tuple<std::uint64_t, std::uint64_t, int, int>>{{0, 1000, 0, 0},
                                                                                   {500, 1000, 50, 130},
                                                                                   {999, 1000, 99, 259},
                                                                                   {1000, 1000, 100, 260},
                                                                                   {2000, 1000, 100, 260},
                                                                                   {huge / 4, huge, 25, 65}}) {
        snapshot.progressDone = done;
        snapshot.progressTotal = total;
        draw();
        EXPECT_TRUE(onRight(720, 342, "UPDATE " + std::to_string(percent) + "%", 0.82f, rgb(178, 195, 189))) << done;
        EXPECT_TRUE(screen.isFilled(720, 322, width, 10, rgb(192, 53, 43))) << done;
        EXPECT_TRUE(screen.isFilled(721 + width, 322, std::max(259 - width, 0), 10, rgb(31, 43, 50))) << done;
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
    for (const Form& form : std::initializer_list<Form>{
             {true, true, rgb(111, 35, 31), "UPDATE REQUIRED", 750, 535, 1.25f, rgb(255, 230, 216), "WAIT"},
             {true, false, rgb(111, 35, 31), "UPDATE REQUIRED", 750, 535, 1.25f, rgb(255, 230, 216), "REFRESH"},
             {false, true, rgb(38, 48, 54), "PLEASE WAIT", 790, 535, 1.25f, rgb(212, 222, 220), "WAIT"},
             {false, false, rgb(157, 38, 31), "PLAY", 818, 533, 1.65f, rgb(255, 244, 226), "REFRESH"}}) {
        snapshot.updateRequired = form.updateRequired;
        snapshot.busy = form.busy;
        draw();
        EXPECT_TRUE(screen.isFilled(720, 515, 260, 17, form.fill)) << form.label;
        EXPECT_TRUE(screen.isFilled(720, 548, 260, 29, form.fill)) << form.label;
        EXPECT_EQ(screen.at(719, 515), rightHalf);
        EXPECT_EQ(screen.at(980, 576), rightHalf);
        EXPECT_TRUE(screen.hasText(form.x, form.y, form.label, form.scale, form.text, form.fill, 980)) << form.label;
        EXPECT_TRUE(screen.isFilled(720, 452, 126, 13, smallButton));
        EXPECT_TRUE(screen.isFilled(854, 452, 126, 13, smallButton));
        EXPECT_EQ(screen.at(846, 452), rightHalf);
        EXPECT_TRUE(screen.hasText(736, 466, "REPAIR", 0.95f, rgb(225, 235, 232), smallButton, 846));
        EXPECT_TRUE(screen.hasText(870, 466, form.refresh, 0.95f, rgb(225, 235, 232), smallButton, 980));
    }
}

TEST(Layout, EdgesBelongToTheButtons) {
    for (const auto& [x, y] : std::initializer_list<std::pair<float, float>>{{720, 452}, {846, 494}, {720, 494}})
        EXPECT_TRUE(contains(repairButton, x, y)) << x << ", " << y;
    for (const auto& [x, y] :
         std::initializer_list<std::pair<float, float>>{{719.5f, 460}, {846.5f, 460}, {730, 451.5f}, {730, 494.5f}})
        EXPECT_FALSE(contains(repairButton, x, y)) << x << ", " << y;
    EXPECT_TRUE(contains(refreshButton, 854, 452) && contains(refreshButton, 980, 494));
    EXPECT_TRUE(contains(mainButton, 720, 515) && contains(mainButton, 980, 577));
}
