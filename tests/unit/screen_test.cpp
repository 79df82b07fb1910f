#include "launcher/screen.h"
#include "support/canvas.h"

#include "temporary_folder.h"

#include <gtest/gtest.h>

namespace ca::launcher {
const std::string_view launcherVersion = "7.6.5";
}

using namespace ca::launcher;
using namespace ca::test;
using enum ca::job::JobState;
using Snapshot = ca::job::SharedSnapshot;

class Screen : public testing::Test {
protected:
    Screen() { writeFile(folder / "data/game_version", "1.4.1\n"); }

    Picture draw(const Snapshot& snapshot, const std::string& notes = {}) const {
        drawScreen(canvas.renderer, folder.path(), snapshot, notes);
        return canvas.picture();
    }

    const TemporaryFolder folder;
    const Canvas canvas;
};

static bool shows(const Picture& picture, Colour colour) {
    return std::find(picture.begin(), picture.end(), colour) != picture.end();
}

TEST_F(Screen, NamesWhatIsThereAndWhatAClickDoes) {
    constexpr std::uint64_t huge = 1ULL << 38;
    struct Row {
        Snapshot snapshot;
        float x, y, scale;
        std::string text;
    };
    for (const Row& row :
         {Row{{}, 720, 118, 1.02f, "STARTING..."},
          {{.detailText = "why"}, 720, 154, 0.72f, "why"},
          {{}, 820, 245, 0.82f, "1.4.1"},
          {{}, 820, 270, 0.82f, "CHECKING"},
          {{.latestVersion = "1.4.2"}, 820, 270, 0.82f, "1.4.2"},
          {{}, 720, 342, 0.72f, "SIGNED UPDATE CHANNEL // STABLE"},
          {{.updateAvailable = true}, 720, 342, 0.72f, "UPDATE AVAILABLE"},
          {{.progressTotal = 9}, 720, 342, 0.82f, "UPDATE 0%"},
          {{.progressDone = 999, .progressTotal = 1000}, 720, 342, 0.82f, "UPDATE 99%"},
          {{.progressDone = 3, .progressTotal = 2}, 720, 342, 0.82f, "UPDATE 100%"},
          {{.progressDone = huge, .progressTotal = 4 * huge}, 720, 342, 0.82f, "UPDATE 25%"},
          {{}, 870, 466, 0.95f, "REFRESH"},
          {{.busy = true}, 870, 466, 0.95f, "WAIT"},
          {{}, 818, 533, 1.65f, "PLAY"},
          {{.busy = true}, 790, 535, 1.25f, "PLEASE WAIT"},
          {{.updateRequired = true}, 750, 535, 1.25f, "UPDATE REQUIRED"},
          {{.updateRequired = true, .busy = true}, 750, 535, 1.25f, "UPDATE REQUIRED"}}) {
        SCOPED_TRACE(row.text);
        const Canvas blank;
        blank.write(row.x, row.y, row.text, row.scale, 0xFFFFFF);
        const Picture drawn = draw(row.snapshot), wanted = blank.picture();
        const auto corner = static_cast<std::size_t>(row.y * 1040 + row.x) - 1041;
        int others = 0;
        for (std::size_t at = corner; at < corner + 14 * 1040; ++at) {
            if (at % 1040 >= corner % 1040 && at % 1040 < 976) { // before a button's right edge
                others += (drawn[at] != drawn[corner]) != ((wanted[at] & 0xFFFFFF) != 0);
            }
        }
        EXPECT_EQ(others, 0) << "pixels";
    }
}

TEST_F(Screen, ColoursTheHeadlineByState) {
    for (const auto state : {Checking, Updating, Ready, HandingOver}) {
        EXPECT_TRUE(draw({.jobState = state}) == draw({})) << static_cast<int>(state);
    }
    EXPECT_TRUE(shows(draw({.jobState = ServiceUnavailable}), 0xF2BE6E)); // amber
    EXPECT_TRUE(shows(draw({.jobState = Failed}), 0xFF685C));             // red
}

TEST_F(Screen, FillsTheBarByWhatIsDone) {
    using Row = std::pair<std::uint64_t, int>;
    for (const auto& [done, width] : {Row(500, 130), {1000, 260}, {2000, 260}}) {
        const Picture drawn = draw({.progressDone = done, .progressTotal = 1000});
        EXPECT_EQ(std::count(drawn.begin(), drawn.end(), 0xC0352BU), width * 10) << done;
    }
}

TEST_F(Screen, ShowsTheRowsThatHaveRoom) {
    const auto details = [&](const std::string& text) { return draw({.detailText = text}); };
    const auto notes = [&](const std::string& text) { return draw({}, text); };
    std::string rows;
    for (int row = 1; row <= 17; ++row) {
        rows += std::to_string(row) + "\n";
    }
    EXPECT_TRUE(notes(rows + "18\n19") == notes(rows + "18"));
    EXPECT_FALSE(notes(rows + "18") == notes(rows));
    EXPECT_TRUE(details("1\n2\n3\n4\n5") == details("1\n2\n3\n4"));
    EXPECT_FALSE(details("1\n2\n3\n4") == details("1\n2\n3"));
    for (const std::size_t more : {0U, 1U}) { // characters more than what fits
        const auto words = [=](std::size_t fits, char between) {
            return std::string(fits - 8, 'a') + between + std::string(7 + more, 'b');
        };
        EXPECT_EQ(notes(words(74, ' ')) == notes(words(74, '\n')), more != 0);
        EXPECT_EQ(details(words(38, ' ')) == details(words(38, '\n')), more != 0);
    }
    const auto channels = std::make_shared<const std::string>(100, 'c');
    EXPECT_TRUE(draw({.patchNotes = channels}, "local") == notes(*channels));
}

TEST_F(Screen, ColoursTheHeadingsOfTheNotes) {
    EXPECT_TRUE(shows(draw({}, "Fog\nFIXED"), 0xDDC476));
    EXPECT_FALSE(shows(draw({}, "Fog\nfixed"), 0xDDC476));
}
