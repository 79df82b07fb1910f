// Jobs that end badly, each by a real cause.
#include "program/scenario.h"

using namespace ca::test;

namespace {

struct Row {
    const char* name;
    ca::job::JobState ending;
    std::string cause; // shell commands; a changed manifest is signed anew
    std::string detail;
    Paths changes = {};
    std::uint64_t progress = 0; // of 4,000 bytes
};

constexpr auto Offline = ServiceUnavailable;
const std::string mole = "maps/Größe XL/Nord mole.pak";
const std::string backup = "game/.coldanchor-update/backup-/",
                  stage = "game/.coldanchor-update/stage-/";
const Paths begun{backup};
const Paths undone{backup + "data/", stage + "data/", stage + mole};
const Paths undoneMove{backup + "data/", backup + "maps/Größe XL/", stage + "data/", stage + mole};
const Paths undoneAll{backup + "data/", stage + "data/", stage + "maps/Größe XL/",
                      "game/maps/Größe XL/"};

class FailedJob : public testing::TestWithParam<Row> {};

} // namespace

TEST_P(FailedJob, LeavesTheInstallationAsItWas) {
    const Row& row = GetParam();
    Scenario s;
    const std::string manifest = readFile(s.channel / "manifest.json");
    change(s.folder.path(),
           "game=player/game; server=$game/data/update_server.txt; "
           "key=$game/data/update_public_key.pem; "
           "marker=$game/data/game_version; web=channel/stable/windows; list=$web/manifest.json; " +
               row.cause);
    const std::string changed = readFile(s.channel / "manifest.json");
    if (changed != manifest) {
        writeFile(s.channel / "manifest.sig", ca::kit::signText(changed, s.privateKey));
    }
    s.begin(start);
    auto expected = look(ServiceUnavailable, "UPDATE SERVICE UNAVAILABLE",
                         row.detail + " // ONLINE LOGIN STILL REQUIRED", "");
    if (row.ending == Failed) {
        expected = look(Failed, "UPDATE FAILED - TRY AGAIN", row.detail);
    }
    expected.progressDone = row.progress;
    expected.progressTotal = row.ending == Failed ? 4000 : 0;
    s.see(expected);
    EXPECT_EQ(s.changes(), row.changes);
    s.play("Return"); // as before
    EXPECT_EQ(s.changes(), row.changes);
}

INSTANTIATE_TEST_SUITE_P(
    , FailedJob,
    testing::Values(
        Row{"NoServer", Offline, "rm $server", "update_server_not_configured"},
        Row{"InvalidUrl", Offline, "echo ftp//nowhere >$server", "invalid_update_url"},
        Row{"NobodyListens", Offline, "echo http://127.0.0.1:1 >$server",
            "winhttp_send_failed_12029 // direct:winhttp_send_failed_12029"},
        Row{"NoManifest", Offline, "rm $list", "http_404 // direct:http_404"},
        Row{"NoSignature", Offline, "rm $web/manifest.sig", "http_404 // direct:http_404"},
        Row{"OtherKey", Offline, "echo >>$key", "update_public_key_fingerprint_mismatch"},
        Row{"OtherChannel", Offline, "sed -i s/stable/beta/ $list",
            "manifest_channel_or_platform_mismatch"},
        Row{"NotServed", Failed, "rm -r $web/files/maps", "http_404 // direct:http_404", begun,
            1000},
        Row{"BelowAFile", Failed, "sed -i s,maps/.*pak,data/first.dat/x, $list",
            "download_destination_unwritable", begun, 1000},
        Row{"OtherBytes", Failed, "sed -i y/m/x/ $web/files/maps/*/*",
            "download_hash_mismatch:" + mole, begun, 4000},
        Row{"WorkFolder", Failed, "touch $game/.coldanchor-update", "update_workdir_failed"},
        Row{"Folder", Failed, "touch $game/maps", "update_destination_failed:" + mole, undone,
            4000},
        Row{"Marker", Failed, "rm $marker; mkdir $marker", "version_marker_write_failed", undoneAll,
            4000}),
    [](const auto& row) { return row.param.name; });

TEST(FailedBackup, IsRolledBackWhereAProgramHoldsAFile) {
    if (programRunner().empty()) {
        GTEST_SKIP() << "an open file can be moved here";
    }
    Scenario s;
    writeFile(s.installation / mole, "an old map"); // the last of the plan
    ca::kit::Process holder(
        commandOf(builtProgram("hold_file.exe"),
                  {shownPath(s.installation / mole), "1", "600000", shownPath(s.folder / "held")}));
    EXPECT_TRUE(eventually([&] { return fs::exists(s.folder / "held"); }));
    s.begin(start);
    auto failed = look(Failed, "UPDATE FAILED - TRY AGAIN", "update_backup_failed:" + mole);
    failed.progressDone = failed.progressTotal = 4000;
    s.see(failed);
    EXPECT_EQ(s.changes(), undoneMove);
    holder.stop();
    s.begin(refresh);
    s.see(updated());
    s.play();
}
