#include "launcher/notes.h"

#include "temporary_folder.h"

#include <gtest/gtest.h>
#include <tuple>

using namespace ca::launcher;
using namespace ca::test;
using namespace std::string_literals;
using Rows = std::vector<std::string>;

TEST(Notes, AreWrappedByWords) {
    const std::string longWord(80, 'w');
    const std::tuple<std::string, std::size_t, std::size_t, Rows> table[] = {
        {" \t\n \r\n", 10, 3, {}},
        {"one two three", 7, 9, {"one two", "three"}},
        {"one two three", 6, 9, {"one", "two", "three"}},
        {"  a   b\t\tc  ", 74, 9, {"a b c"}},
        {"a\r\n\r\n\nb", 74, 9, {"a", "b"}},
        {"caf\xc3\xa9s \x01\x7f~ \xff", 74, 9, {"cafs ~"}},
        {"a " + longWord + " b", 74, 9, {"a", longWord, "b"}},
        {"1\n2\n3\n4", 10, 3, {"1", "2", "3"}},
        {"aa bb cc dd ee", 2, 3, {"aa", "bb", "cc"}}};
    for (const auto& [text, width, maxLines, rows] : table) {
        EXPECT_EQ(wrapText(text, width, maxLines), rows) << text;
    }
}

TEST(Notes, HeadingsAreWholeRows) {
    for (const char* heading : {"LAUNCHER", "WEBSITE", "PACKAGING", "ADDED", "IMPROVED", "FIXED",
                                "Cold Anchor v", "Cold Anchor v1.4.2 and more"}) {
        EXPECT_TRUE(isNotesHeading(heading)) << heading;
    }
    for (const char* text :
         {"", "added", "ADDED:", "FIXED ", "Cold Anchor 1.4", "Cold Anchor", "cold anchor v1"}) {
        EXPECT_FALSE(isNotesHeading(text)) << text;
    }
}

TEST(Notes, ComeFromTheFirstFileThatSaysSomething) {
    const TemporaryFolder folder;
    EXPECT_EQ(
        loadLocalPatchNotes(folder.path()),
        "Cold Anchor 0.16.117\n- Current build ready.\n- No local patch notes file was found.");
    writeFile(folder / "data/game_version", "\xff\xfe\x31\0.\0"s); // saved in another encoding
    EXPECT_TRUE(loadLocalPatchNotes(folder.path()).starts_with("Cold Anchor \xff"));
    fs::remove(folder / "data/game_version");
    const char* const rows[][3] = {{"PATCH_NOTES.txt", "third\n", "third"},
                                   {"PATCH_NOTES_v0.16.117.txt", "\nsecond\r\n", "second"},
                                   {"data/patch_notes.txt", " \n", "second"},
                                   {"data/patch_notes.txt", "first", "first"}};
    for (const auto& [file, text, notes] : rows) {
        writeFile(folder / file, text);
        EXPECT_EQ(loadLocalPatchNotes(folder.path()), notes);
    }
}

TEST(Notes, OfTheChannelNeedEightyBytes) {
    ca::job::SharedSnapshot snapshot;
    EXPECT_EQ(chooseNotesText(snapshot, "local"), "local");
    for (const std::size_t size : {79U, 80U}) {
        snapshot.patchNotes = std::make_shared<const std::string>(size, ' ');
        EXPECT_EQ(chooseNotesText(snapshot, "local").size(), size == 80 ? 80U : 5U);
    }
}
