// The player's files, where the environment, the disk and the rights to it differ.
#include "handover/machine.h"

#include <unistd.h>

using namespace ca::test;

namespace {

struct Player : Machine {
    Player() {
        makeCurrent();
        put("next/" + launcherName, installation / launcherName);
        writeFile(installation / "save/profile_v07.sav", "ashore");
        fs::create_directory(player / "a ö");
        fs::permissions(player / "a ö", fs::perms(0777));
    }
    // The launcher has started with these changes of its environment, and ended again.
    void run(std::vector<std::string> changes) {
        changes.insert(changes.begin(), "env");
        if (::geteuid() == 0) // whom rights don't bind
            changes.insert(changes.end(), {"setpriv", "--reuid=nobody", "--regid=nogroup", "--clear-groups"});
        wrapper = changes;
        begin(start);
        see(look(Ready, "READY TO PLAY", "VERSION 1.4.2 // stable"));
        close();
    }
};

} // namespace

TEST(UserData, GoesWhereTheEnvironmentSays) {
    if (!programRunner().empty())
        GTEST_SKIP() << "Wine sets these variables itself";
    Player s;
    fs::permissions(s.installation, fs::perms(0777));
    const std::string a = s.player / "a ö";
    struct Row {
        std::vector<std::string> environment;
        fs::path saves;
    };
    for (const Row& row : {
             Row{{"LOCALAPPDATA=" + a + "/Ünal 船", "APPDATA=" + a + "/b"}, a + "/Ünal 船/ColdAnchor/saves"},
             Row{{"LOCALAPPDATA=", "APPDATA=" + a + "/b"}, a + "/b/ColdAnchor/saves"},
             Row{{"-u", "LOCALAPPDATA", "APPDATA=" + a + "/c"}, a + "/c/ColdAnchor/saves"},
             Row{{"LOCALAPPDATA=", "APPDATA="}, s.installation / "userdata/saves"},
         }) {
        SCOPED_TRACE(row.saves);
        s.run(row.environment);
        EXPECT_EQ(readFile(row.saves / "profile_v07.sav"), "ashore");
        EXPECT_EQ(readFile(row.saves / "settings_v01.cfg"), "volume 3\n");
    }
}

TEST(UserData, LosesNothingWhereACopyFails) {
    if (!programRunner().empty())
        GTEST_SKIP() << "Wine sets these variables itself";
    struct Row {
        const char* name;
        std::function<void(const Player&, const fs::path& saves)> prepare;
        Paths changes;
    };
    const std::string base = "a ö/ColdAnchor/saves/";
    for (const Row& row : {
             Row{"source can't be read",
                 [](const Player&s, const fs::path&) {
                     fs::permissions(s.installation / "save/profile_v07.sav", fs::perms::none);
                 },
                 {base + "settings_v01.cfg"}},
             Row{"both there already, one of them newer and one a folder",
                 [](const Player&, const fs::path&saves) {
                     writeFile(saves / "settings_v01.cfg", "");
                     fs::create_directory(saves / "profile_v07.sav");
                 },
                 {}},
             Row{"destination can't be written",
                 [](const Player&, const fs::path&saves) {
                     fs::create_directories(saves);
                     fs::permissions(saves, fs::perms(0555));
                 },
                 {}},
             Row{"destination is a file", [](const Player&, const fs::path&saves) { writeFile(saves, "mine"); }, {}},
         }) {
        SCOPED_TRACE(row.name);
        Player s;
        row.prepare(s, s.player / base.substr(0, base.size() - 1));
        s.run({"LOCALAPPDATA=" + (s.player / "a ö").string()});
        Paths changes = s.changes();
        std::erase(changes, "a ö/"); // no longer empty
        EXPECT_EQ(changes, row.changes);
    }
}
