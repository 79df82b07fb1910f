#include "helper/installation.h"

using namespace ca::test;

TEST(Helper, RefusesEveryOtherCommandLine) {
    const Installation i;
    const fs::path work = i.game / ".coldanchor-update", outside = i.folder / "outside";
    fs::create_directory_symlink(i.stage, work / "stage-17");
    fs::create_directory_symlink(outside, i.stage / "link");
    const auto before = i.contents();
    const auto expectStatus = [&i](int status, std::size_t at, const std::string& word) {
        auto words = i.arguments();
        words[at] = word;
        if (status == 11 && at == 5) {
            words[7] = word;
        }
        EXPECT_EQ(i.run(words), status) << word;
    };
    using Word = std::pair<std::size_t, const char*>;
    for (const auto& [at, word] : {Word(0, "--wait"),
                                   {1, ""},
                                   {1, "0"},
                                   {1, "-1"},
                                   {1, " 12"},
                                   {1, "12x"},
                                   {1, "4294967296"},
                                   {1, "99999999999999999999"},
                                   {2, "--target"},
                                   {3, ""},
                                   {4, "--replace"},
                                   {5, ""},
                                   {6, "--Relaunch"}}) {
        expectStatus(10, at, word);
    }
    expectStatus(11, 5, shownPath(i.game / "ColdAnchor.exe"));
    expectStatus(11, 5, shownPath(i.game / ("x" + launcherName)));
    expectStatus(11, 7, shownPath(i.staged));
    expectStatus(11, 7, "");
    const fs::path otherGame = i.game.string() + "x";
    for (const fs::path& path :
         {i.target, i.stage, i.stage / "", outside / launcherName, i.stage / "../../x.exe",
          work / "stage-/x.exe", work / "stage-1a/x.exe", work / "stage1/x.exe",
          work / "backup-17/x.exe", otherGame / i.staged.lexically_relative(i.game),
          work / "stage-17" / launcherName, i.stage / "link" / launcherName}) {
        expectStatus(12, 3, shownPath(path));
    }
    auto words = i.arguments();
    words.push_back("--verbose");
    EXPECT_EQ(i.run(words), 10);
    EXPECT_EQ(i.run({}), 10);
    EXPECT_EQ(differing(i.contents(), before), Paths());

    fs::rename(work, outside / "work"); // the work folder itself as a link
    fs::create_directory_symlink(outside / "work", work);
    EXPECT_EQ(i.run(), 12);
    EXPECT_TRUE(fs::is_symlink(work));
    EXPECT_TRUE(readFile(i.target) == standIn("old"));
    // A helper in the installation leaves nobody without a launcher.
    const fs::path own = i.game / "ColdAnchorUpdateHelper.exe";
    fs::copy_file(builtProgram(own.filename()), own);
    EXPECT_EQ(Process(commandOf(own, i.arguments())).wait(std::chrono::seconds(90)), 12);
    i.expectStarted("old");
}

TEST(Helper, ReplacesStartsAndTidiesUp) {
    const std::string deep = "tiefe Ordner/" + std::string(120, 'd') + "/" + std::string(130, 'e');
    using Row = std::pair<std::string, fs::path>;
    for (const auto& [place, staged] : {Row("game", launcherName),
                                        {"Größe XL アンカー", "tools/ä b/" + launcherName},
                                        {"game", deep + "/" + launcherName}}) {
        SCOPED_TRACE(staged);
        const Installation i(place, staged);
        writeFile(i.stage / "data/left.dat", "left");
        if (programRunner().empty()) { // Wine follows no link here either, but can't remove it
            fs::create_directory_symlink(i.folder / "outside", i.stage / "link");
            fs::create_directory_symlink(i.folder / "nowhere", i.stage / "data/broken");
        }
        writeFile(i.game / ".coldanchor-update/stage-1/other", "another attempt's");
        auto expected = i.contents();
        EXPECT_EQ(i.run(), 0);
        i.expectStarted("new");
        const std::string game = place + "/";
        std::erase_if(expected,
                      [&](const auto& entry) { return entry.first.starts_with(game + stagePath); });
        expected[game + ".coldanchor-update/backup-1700000000123/" + launcherName] = standIn("old");
        expected[game + launcherName] = standIn("new");
        expected[game + "started.txt"] = readFile(i.game / "started.txt");
        EXPECT_EQ(differing(expected, i.contents()), Paths());
    }
}

TEST(Helper, StartsWhicheverLauncherThereIs) {
    using Row = std::tuple<int, const char*>;
    for (const auto& [status, cause] : {Row(0, "rm $old"),
                                        {13, "rm $new"},
                                        {13, "rm -r stage-*"},
                                        {13, ": >$new"},
                                        {13, "echo MZ, or so >$new"},
                                        {15, "rmdir $backup; touch $backup"},
                                        {15, "rmdir $backup; ln -s ../../outside $backup"}}) {
        SCOPED_TRACE(cause);
        const Installation i;
        change(i.game / ".coldanchor-update",
               "old=../*.exe; new=$(echo stage-*/*); backup=$(echo backup-*); " +
                   std::string(cause));
        EXPECT_EQ(i.run(), status);
        i.expectStarted(status == 0 ? "new" : "old");
        EXPECT_EQ(readFile(i.folder / "outside" / launcherName), "mine");
    }
    const Installation i;
    Installation::breakProgram(i.staged);
    EXPECT_EQ(i.run(), 17);
    i.expectStarted("old");
    const Installation neither;
    Installation::put(neither.target, "text");
    Installation::breakProgram(neither.staged);
    EXPECT_EQ(neither.run(), 18);
    EXPECT_EQ(readFile(neither.target), "text");
}
