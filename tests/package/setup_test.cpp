// What a player meets: the setup program, the first start, and the removal. Runs on the host;
// the programs under Wine.
#include "program/scenario.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <set>
#include <sstream>
#include <sys/mount.h>

using namespace ca::test;

namespace {

const std::set<std::string> installed = {"ColdAnchorLauncher.exe",
                                         "ColdAnchorUpdateHelper.exe",
                                         "Uninstall.exe",
                                         "assets/launcher/cold_anchor_launcher.png",
                                         "data/update_public_key.pem",
                                         "data/update_server.txt"};

const char* const menuEntry =
    "AppData/Roaming/Microsoft/Windows/Start Menu/Programs/Cold Anchor.lnk";

// Files and links; none where no folder is.
std::set<std::string> filesBelow(const fs::path& folder) {
    std::set<std::string> names;
    for (const auto& [name, bytes] : contentsOf(folder)) {
        if (!name.ends_with('/')) {
            names.insert(name);
        }
    }
    return names;
}

// The exit status. The options go in word by word: what follows /D= stands without
// quotation marks, up to the end. One word with a blank, here within quotation marks,
// reaches the program within them.
int run(const fs::path& program, const std::string& options) {
    std::istringstream words(options);
    const auto command = commandOf(program, {std::istream_iterator<std::string>(words), {}});
    display::open();
    return ca::kit::Process(command).wait(std::chrono::seconds(60)).value_or(-1);
}

fs::path setupProgram() {
    return testedBuild() / "package/ColdAnchorSetup-" PROGRAM_TEST_VERSION ".exe";
}

int install(const fs::path& folder) {
    return run(setupProgram(), "/S /D=" + shownPath(folder));
}

// The exit status of an uninstaller that is told to go on where it is.
int tryToUninstall(const fs::path& folder) {
    return run(folder / "Uninstall.exe", "/S _?=" + shownPath(folder));
}

// The uninstaller goes on as a copy of itself when its first process has ended.
void uninstall(const fs::path& folder, const std::set<std::string>& left) {
    EXPECT_EQ(run(folder / "Uninstall.exe", "/S"), 0);
    EXPECT_TRUE(eventually([&] { return filesBelow(folder) == left; }))
        << testing::PrintToString(filesBelow(folder));
}

// Below drive C, there or in the user's own folder; empty if it isn't there.
std::string onDriveC(const std::string& name) {
    const fs::path drive = testedBuild() / "wine-setup/drive_c";
    for (const auto& user : fs::directory_iterator(drive / "users")) {
        if (const std::string path =
                drive / ("users/" + user.path().filename().string() + "/" + name);
            fs::exists(path)) {
            return path;
        }
    }
    return fs::exists(drive / name) ? drive / name : "";
}

} // namespace

TEST(Setup, LeadsToTheGameAndBack) {
    Scenario s; // its channel offers the launcher of the setup program, the game and its data
    const std::string notes = readFile(s.data / "patch_notes.txt");
    fs::remove_all(s.installation);
    ASSERT_EQ(install(s.installation), 0);
    EXPECT_EQ(filesBelow(s.installation), installed);
    fs::copy(s.installation, s.tree, fs::copy_options::recursive);
    for (const char* own :
         {"Uninstall.exe", "data/update_public_key.pem", "data/update_server.txt"}) {
        fs::remove(s.tree / own);
    }
    fs::copy_file(builtProgram("fake_game.exe"), s.tree / "ColdAnchor.exe");
    writeFile(s.data / "patch_notes.txt", notes);
    s.publish();
    s.serve();

    s.begin(start);
    s.see(updated());
    EXPECT_EQ(install(s.installation), 4) << "the launcher runs";
    EXPECT_EQ(tryToUninstall(s.installation), 4);
    s.expectCurrent();
    s.play();

    const std::string deep(100, 'd');
    writeFile(s.installation / deep / deep / deep / "at the end.txt", "beyond 260 characters");
    writeFile(s.installation / "Tom's `maps`/\U0001F9CA.txt",
              "with characters that a script could stumble over");
    for (const auto& file : {s.installation / "Tom's `maps`/\U0001F9CA.txt",
                             s.installation / "ColdAnchorLauncher.exe"}) {
        fs::permissions(file, fs::perms::owner_read);
    }
    writeFile(s.folder / "elsewhere/kept.txt", "not ours");
    fs::create_directory_symlink(s.folder / "elsewhere", s.installation / "maps/link");
    writeFile(s.installation / "save/profile_v07.sav", "level 3");
    writeFile(s.installation / "userdata/saves/profile_v07.sav", "level 4");
    ASSERT_EQ(install(s.installation), 0) << "a second time, over it";
    EXPECT_TRUE(fs::exists(s.installation / "ColdAnchor.exe"));
    uninstall(s.installation, {"save/profile_v07.sav", "userdata/saves/profile_v07.sav",
                               "maps/link"}); // Windows removes a link to a folder, Wine can't
    EXPECT_EQ(readFile(s.folder / "elsewhere/kept.txt"), "not ours");
    EXPECT_EQ(readFile(s.player / "local/ColdAnchor/saves/settings_v01.cfg"), "volume 7\n");
}

TEST(Setup, TakesTheUsualFoldersAndTheStartMenu) {
    for (const auto& [options, place, menu] :
         {std::tuple("/S", "AppData/Local/Programs/Cold Anchor", menuEntry),
          {"/S /ALLUSERS", "Program Files/Cold Anchor",
           "ProgramData/Microsoft/Windows/Start Menu/Programs/Cold Anchor.lnk"}}) {
        SCOPED_TRACE(options);
        EXPECT_EQ(run(setupProgram(), options), 0);
        const fs::path folder = onDriveC(place);
        ASSERT_FALSE(folder.empty());
        EXPECT_EQ(filesBelow(folder), installed);
        EXPECT_NE(onDriveC(menu), "");
        uninstall(folder, {});
        EXPECT_TRUE(eventually([&, name = menu] { return onDriveC(name).empty(); }));
    }
}

TEST(Setup, TouchesNoFolderWithOtherThings) {
    const TemporaryFolder folder, installation;
    const fs::path own = folder / "a player's own.txt",
                   launcher = folder / "ColdAnchorLauncher.exe";
    writeFile(own, "text");
    EXPECT_EQ(install(folder.path()), 3);
    writeFile(launcher, "moved there");
    EXPECT_EQ(install(folder.path()), 3);
    EXPECT_EQ(install(installation.path()), 0);
    fs::copy(installation / "Uninstall.exe", folder / "Uninstall.exe");
    EXPECT_EQ(tryToUninstall(folder.path()), 3);
    EXPECT_EQ(filesBelow(folder.path()),
              (std::set<std::string>{own.filename(), launcher.filename(), "Uninstall.exe"}));
    for (const char* nowhere : {"/D=game", "/D=C:/game", "/D=C:\\", R"("/D=C:\\a game")"}) {
        EXPECT_EQ(run(setupProgram(), std::string("/S ") + nowhere), 3) << nowhere;
    }

    // One that an interrupted setup has left is its own, and one program's removal
    // leaves another's menu entry.
    const TemporaryFolder second;
    writeFile(second / "ColdAnchorSetup.new/data/update_server.txt", "half");
    writeFile(second / "assets/launcher/cold_anchor_launcher.png", "half");
    fs::create_directory_symlink(folder.path(), second / "ColdAnchorSetup.new/link");
    writeFile(second / "ColdAnchorLauncher.exe/in use", "so that it can't be replaced");
    for (const char* hindrance : {"ColdAnchorSetup.new/link", "ColdAnchorLauncher.exe"}) {
        EXPECT_EQ(install(second.path()), 2) << hindrance;
        fs::remove_all(second / hindrance);
    }
    EXPECT_TRUE(fs::exists(own));
    EXPECT_EQ(install(second.path()), 0);
    EXPECT_EQ(filesBelow(second.path()), installed);
    EXPECT_EQ(tryToUninstall(installation.path()), 0);
    EXPECT_NE(onDriveC(menuEntry), "");
    uninstall(second.path(), {});
    EXPECT_TRUE(eventually([] { return onDriveC(menuEntry).empty(); }));
}

TEST(Setup, LeavesWhatAFullDiskCantReplace) {
    const TemporaryFolder disk;
    if (::mount("none", disk.path().c_str(), "tmpfs", 0, "size=5m") != 0) {
        GTEST_SKIP() << "only root can make a small disk";
    }
    const fs::path folder = disk / "game", launcher = folder / "ColdAnchorLauncher.exe";
    EXPECT_EQ(install(folder), 0);
    writeFile(launcher, "an older one");
    change(disk.path(), "cat /dev/zero >fill 2>/dev/null || true");
    EXPECT_EQ(install(folder), 2);
    EXPECT_TRUE(readFile(launcher) == "an older one");
    EXPECT_EQ(filesBelow(folder), installed);
    EXPECT_EQ(::umount2(disk.path().c_str(), MNT_DETACH), 0);
}

// Wine's own libraries load bcrypt, crypt32 and setupapi in a way that no program can steer;
// Windows' don't. So these aren't planted.
TEST(Launcher, LoadsNoLibraryFromItsFolder) {
    const auto loaded = [](const fs::path& folder) {
        std::set<std::string> names = filesBelow(folder);
        std::erase_if(names, [](const std::string& name) { return !name.ends_with(".loaded"); });
        return names;
    };
    const auto plant = [](const fs::path& folder, const std::vector<std::string>& names) {
        std::string native; // as Windows does, Wine then looks beside the program first
        for (const std::string& name : names) {
            fs::copy_file(builtProgram("planted.dll"), folder / (name + ".dll"));
            native += name + "=n,b;";
        }
        ::setenv("WINEDLLOVERRIDES", native.c_str(), 1);
    };
    Scenario s;
    plant(s.installation, {"winhttp", "version", "winmm", "imm32", "dwmapi", "dxgi", "d3d9",
                           "shcore", "uxtheme", "combase", "opengl32", "dinput8"});
    s.makeCurrent();
    s.begin(start);
    s.see(current());
    s.close();
    EXPECT_EQ(loaded(s.installation), std::set<std::string>());

    const TemporaryFolder other; // a program that takes no care
    fs::copy_file(builtProgram("careless.exe"), other / "careless.exe");
    plant(other.path(), {"winhttp", "version"});
    EXPECT_EQ(run(other / "careless.exe", ""), 0);
    EXPECT_EQ(loaded(other.path()),
              (std::set<std::string>{"VERSION.dll.loaded", "WINHTTP.dll.loaded"}));
    ::unsetenv("WINEDLLOVERRIDES");
}
