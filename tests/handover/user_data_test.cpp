// The player's files, where the environment, the disk and the rights to it differ.
#include "shared/process.h"
#include "support/programs.h"
#include "unit/temporary_folder.h"

#include <unistd.h>

using namespace ca::test;
namespace fs = std::filesystem;

namespace {

struct Player {
    Player() {
        fs::create_directories(a);
        writeFile(game / "save/profile_v07.sav", "ashore");
        writeFile(game / "save/settings_v01.cfg", "volume 3\n");
        fs::copy_file(builtProgram("player_files.exe"), game / "player_files.exe");
        for (const fs::path& writable : {a, game}) {
            fs::permissions(writable, fs::perms(0777));
        }
    }
    // With these places for a player's files.
    void run(const std::string& local, const std::string& roaming) const {
        auto words =
            commandOf(game / "player_files.exe", {"LOCALAPPDATA", local, "APPDATA", roaming});
        if (::geteuid() == 0 && programRunner().empty()) { // whom rights don't bind
            words.insert(words.begin(),
                         {"setpriv", "--reuid=nobody", "--regid=nogroup", "--clear-groups"});
        }
        EXPECT_EQ(ca::kit::Process(words).wait(std::chrono::seconds(20)), 0);
    }

    TemporaryFolder folder;
    fs::path game = folder / "game";
    fs::path a = folder / "a ö";
};

} // namespace

TEST(UserData, GoesWhereTheEnvironmentSays) {
    const Player s;
    using Row = std::tuple<std::string, std::string, fs::path>;
    for (const auto& [local, roaming, place] :
         {Row(shownPath(s.a / "Ünal 船"), shownPath(s.a / "b"), s.a / "Ünal 船/ColdAnchor"),
          {"", shownPath(s.a / "b"), s.a / "b/ColdAnchor"},
          {"-", shownPath(s.a / "c"), s.a / "c/ColdAnchor"},
          {"", "-", s.game / "userdata"}}) {
        s.run(local, roaming);
        EXPECT_EQ(readFile(place / "saves/profile_v07.sav"), "ashore") << place;
    }
}

TEST(UserData, LosesNothingWhereACopyFails) {
    using Row = std::pair<std::string, Paths>;
    for (const auto& [cause, changes] :
         {Row("chmod 0 ../game/save/profile_v07.sav",
              {"ColdAnchor/", "ColdAnchor/saves/", "ColdAnchor/saves/settings_v01.cfg"}),
          {"mkdir -p ColdAnchor/saves; echo mine >ColdAnchor/saves/settings_v01.cfg",
           {"ColdAnchor/saves/profile_v07.sav"}},
          {"mkdir -p ColdAnchor/saves/profile_v07.sav; touch ColdAnchor/saves/settings_v01.cfg",
           {}},
          {"mkdir -p ColdAnchor/saves; chmod 555 ColdAnchor/saves", {}},
          {"mkdir ColdAnchor; echo mine >ColdAnchor/saves", {}}}) {
        if (!programRunner().empty() && cause.find("chmod") != std::string::npos) {
            continue; // Wine runs as whoever runs the tests, whom rights may not bind
        }
        const Player s;
        change(s.a, "umask 0; " + cause);
        const Contents before = contentsOf(s.a);
        s.run(shownPath(s.a), "-");
        EXPECT_EQ(differing(before, contentsOf(s.a)), changes) << cause;
    }
}
