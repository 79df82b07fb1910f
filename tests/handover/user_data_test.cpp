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
    // The launcher has started with these places for a player's files, and ended again.
    void run(const std::optional<std::string>& local, const std::string& roaming = {}) {
        if (::geteuid() == 0 && programRunner().empty()) { // whom rights don't bind
            wrapper = {"setpriv", "--reuid=nobody", "--regid=nogroup", "--clear-groups"};
        }
        variables = {{"LOCALAPPDATA", local}, {"APPDATA", roaming}};
        begin(start);
        see(current());
        close();
    }
};

} // namespace

TEST(UserData, GoesWhereTheEnvironmentSays) {
    Player s;
    fs::permissions(s.installation, fs::perms(0777));
    const fs::path a = s.player / "a ö";
    using Row = std::tuple<std::optional<std::string>, std::string, fs::path>;
    for (const auto& [local, roaming, folder] :
         {Row(shownPath(a / "Ünal 船"), shownPath(a / "b"), a / "Ünal 船/ColdAnchor"),
          Row("", shownPath(a / "b"), a / "b/ColdAnchor"),
          Row({}, shownPath(a / "c"), a / "c/ColdAnchor"),
          Row("", "", s.installation / "userdata")}) {
        SCOPED_TRACE(folder);
        s.run(local, roaming);
        EXPECT_EQ(readFile(folder / "saves/profile_v07.sav"), "ashore");
        EXPECT_EQ(readFile(folder / "saves/settings_v01.cfg"), "volume 3\n");
    }
}

TEST(UserData, LosesNothingWhereACopyFails) {
    const std::string saves = "a ö/ColdAnchor/saves";
    using Row = std::pair<std::string, Paths>;
    for (const auto& [cause, changes] :
         {Row("chmod 0 ../game/save/profile_v07.sav", {saves + "/settings_v01.cfg"}),
          Row("mkdir -p ColdAnchor/saves/profile_v07.sav; touch ColdAnchor/saves/settings_v01.cfg",
              {}),
          Row("mkdir -p ColdAnchor/saves; chmod 555 ColdAnchor/saves", {}),
          Row("mkdir ColdAnchor; echo mine >ColdAnchor/saves", {})}) {
        SCOPED_TRACE(cause);
        if (!programRunner().empty() && cause.find("chmod") != std::string::npos) {
            continue; // Wine runs as whoever runs the tests, whom rights may not bind
        }
        Player s;
        change(s.player / "a ö", cause);
        s.run(shownPath(s.player / "a ö"));
        Paths seen = s.changes();
        std::erase(seen, "a ö/"); // no longer empty
        EXPECT_EQ(seen, changes);
    }
}
