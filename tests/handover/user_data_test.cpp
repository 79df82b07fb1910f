// The player's files, where the environment, the disk and the rights to it differ.
#include "handover/machine.h"

#include <unistd.h>

using namespace ca::test;

namespace {

struct Player : Machine {
    Player() {
        makeCurrent();
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
        see(current());
        close();
    }
};

} // namespace

TEST(UserData, GoesWhereTheEnvironmentSays) {
    Player s;
    fs::permissions(s.installation, fs::perms(0777));
    const std::string a = s.player / "a ö";
    using Row = std::pair<std::vector<std::string>, fs::path>;
    for (const auto& [environment, saves] :
         {Row({"LOCALAPPDATA=" + a + "/Ünal 船", "APPDATA=" + a + "/b"}, a + "/Ünal 船/ColdAnchor/saves"),
          Row({"LOCALAPPDATA=", "APPDATA=" + a + "/b"}, a + "/b/ColdAnchor/saves"),
          Row({"-u", "LOCALAPPDATA", "APPDATA=" + a + "/c"}, a + "/c/ColdAnchor/saves"),
          Row({"LOCALAPPDATA=", "APPDATA="}, s.installation / "userdata/saves")}) {
        SCOPED_TRACE(saves);
        s.run(environment);
        EXPECT_EQ(readFile(saves / "profile_v07.sav"), "ashore");
        EXPECT_EQ(readFile(saves / "settings_v01.cfg"), "volume 3\n");
    }
}

TEST(UserData, LosesNothingWhereACopyFails) {
    const std::string saves = "a ö/ColdAnchor/saves";
    using Row = std::pair<std::string, Paths>;
    for (const auto& [cause, changes] :
         {Row("chmod 0 ../game/save/profile_v07.sav", {saves + "/settings_v01.cfg"}),
          Row("mkdir -p ColdAnchor/saves/profile_v07.sav; touch ColdAnchor/saves/settings_v01.cfg", {}),
          Row("mkdir -p ColdAnchor/saves; chmod 555 ColdAnchor/saves", {}),
          Row("mkdir ColdAnchor; echo mine >ColdAnchor/saves", {})}) {
        SCOPED_TRACE(cause);
        Player s;
        change(s.player / "a ö", cause);
        s.run({"LOCALAPPDATA=" + (s.player / "a ö").string()});
        Paths seen = s.changes();
        std::erase(seen, "a ö/"); // no longer empty
        EXPECT_EQ(seen, changes);
    }
}
