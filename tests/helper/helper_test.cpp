#include "helper/installation.h"

using namespace ca::test;

TEST(Helper, RefusesEveryOtherCommandLine) {
    const Installation i;
    const auto before = i.contents();
    const std::string work = i.game / ".coldanchor-update";
    const std::string outside = i.folder / "outside";
    fs::create_directory_symlink(i.stage, work + "/stage-17");
    fs::create_directory_symlink(outside, i.stage / "link");
    const auto withLinks = i.contents();
    struct Row {
        int status;
        std::size_t at;
        std::string word;
    };
    for (const Row& row : std::initializer_list<Row>{
             {10, 0, "--wait"},
             {10, 1, ""},
             {10, 1, "0"},
             {10, 1, "-1"},
             {10, 1, " 12"},
             {10, 1, "12x"},
             {10, 1, "4294967296"},
             {10, 1, "99999999999999999999"},
             {10, 2, "--target"},
             {10, 3, ""},
             {10, 4, "--replace"},
             {10, 5, ""},
             {10, 6, "--Relaunch"},
             {11, 5, shownPath(i.game / "ColdAnchor.exe")},
             {11, 5, shownPath(i.game / ("x" + launcherName))},
             {11, 7, shownPath(i.staged)},
             {11, 7, ""},
             {12, 3, shownPath(i.target)},
             {12, 3, shownPath(i.stage)},
             {12, 3, shownPath(i.stage / "")},
             {12, 3, shownPath(outside + "/file")},
             {12, 3, shownPath(i.stage / "../../x.exe")},
             {12, 3, shownPath(work + "/stage-/x.exe")},
             {12, 3, shownPath(work + "/stage-1a/x.exe")},
             {12, 3, shownPath(work + "/backup-17/x.exe")},
             {12, 3, shownPath(i.game.string() + "x/" + stagePath + "/" + launcherName)},
             {12, 3, shownPath(work + "/stage-17/" + launcherName)},
             {12, 3, shownPath(i.stage / "link/file")},
         }) {
        SCOPED_TRACE(row.word);
        auto words = i.arguments();
        words[row.at] = row.word;
        if (row.status == 11 && row.at == 5)
            words[7] = row.word;
        EXPECT_EQ(i.run(words), row.status);
    }
    auto words = i.arguments();
    words.push_back("--verbose");
    EXPECT_EQ(i.run(words), 10);
    EXPECT_EQ(i.run({}), 10);
    EXPECT_EQ(differing(i.contents(), withLinks), "");

    fs::rename(work, outside + "/work"); // the work folder itself as a link
    fs::create_directory_symlink(outside + "/work", work);
    EXPECT_EQ(i.run(), 12);
    EXPECT_TRUE(fs::is_symlink(work) && readFile(i.target) == before.at(i.target.lexically_relative(i.folder.path())));
}

TEST(Helper, ReplacesStartsAndTidiesUp) {
    const std::string deep = "tiefe Ordner/" + std::string(120, 'd') + "/" + std::string(130, 'e');
    struct Row {
        fs::path place, staged;
    };
    for (const Row& row : {Row{"game", launcherName}, Row{"Größe XL アンカー", "tools/ä b/" + launcherName},
                           Row{"game", deep + "/" + launcherName}}) {
        SCOPED_TRACE(row.staged);
        const Installation i(row.place, row.staged);
        writeFile(i.stage / "data/left.dat", "left");
        if (programRunner().empty()) { // Wine follows no link here either, but can't remove it
            fs::create_directory_symlink(i.folder / "outside", i.stage / "link");
            fs::create_directory_symlink(i.folder / "nowhere", i.stage / "data/broken");
        }
        writeFile(i.game / ".coldanchor-update/stage-1/other", "another attempt's");
        auto expected = i.contents();
        EXPECT_EQ(i.run(), 0);
        i.expectStarted("new");
        const std::string game = row.place.string() + "/";
        std::erase_if(expected, [&](const auto& entry) { return entry.first.starts_with(game + stagePath); });
        expected[game + ".coldanchor-update/backup-1700000000123/" + launcherName] = standIn("old");
        expected[game + launcherName] = standIn("new");
        expected[game + "started.txt"] = readFile(i.game / "started.txt");
        EXPECT_EQ(differing(expected, i.contents()), "");
    }
}

TEST(Helper, StartsTheOldLauncherWhenThereIsNoNewOne) {
    const std::string program = standIn("new");
    struct Row {
        const char* name;
        int status;
        std::function<void(const Installation&)> change;
    };
    for (const Row& row : {
             Row{"vanished", 13, [](const Installation& i) { fs::remove(i.staged); }},
             Row{"stage folder vanished", 13, [](const Installation& i) { fs::remove_all(i.stage); }},
             Row{"empty", 13, [](const Installation& i) { writeFile(i.staged, ""); }},
             Row{"text", 13, [](const Installation& i) { writeFile(i.staged, "MZ, or so"); }},
             Row{"can't run", 17, [](const Installation& i) { Installation::put(i.staged, brokenProgram()); }},
             Row{"no place to keep the old one", 15,
                 [](const Installation& i) { fs::remove(i.backup), writeFile(i.backup, ""); }},
         }) {
        SCOPED_TRACE(row.name);
        const Installation i;
        row.change(i);
        EXPECT_EQ(i.run(), row.status);
        i.expectStarted("old");
    }
}

TEST(Helper, InstallsWhereNoLauncherIsLeft) {
    const Installation i;
    fs::remove(i.target);
    EXPECT_EQ(i.run(), 0);
    i.expectStarted("new");
    const Installation neither;
    Installation::put(neither.target, "text");
    Installation::put(neither.staged, brokenProgram());
    EXPECT_EQ(neither.run(), 18);
    EXPECT_EQ(readFile(neither.target), "text");
}

TEST(Helper, WritesThroughNoLink) {
    const Installation i;
    fs::remove(i.backup);
    Installation::put(i.folder / ("outside/" + launcherName), "mine");
    fs::create_directory_symlink(i.folder / "outside", i.backup);
    EXPECT_EQ(i.run(), 15);
    i.expectStarted("old");
    EXPECT_TRUE(readFile(i.folder / ("outside/" + launcherName)) == "mine");
}
