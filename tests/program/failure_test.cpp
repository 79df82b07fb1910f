// Jobs that end badly, each by a real cause and on every road that leads to a job.
#include "program/scenario.h"

using namespace ca::test;

namespace {

struct Row {
    const char* name;
    ca::job::JobState ending;
    std::string cause; // shell commands; a changed manifest is signed anew
    std::string detail;
    Paths changes = {};
    std::uint64_t progress = 0;  // of 4,000 bytes
    std::string directives = {}; // of the server
};

void bringAbout(const Scenario& s, const std::string& cause) {
    const std::string manifest = readFile(s.channel / "manifest.json");
    change(
        s.folder.path(),
        "other='" + s.otherVolume.path().string() +
            "'; game=player/game; server=$game/data/update_server.txt; "
            "key=$game/data/update_public_key.pem; "
            "marker=$game/data/game_version; web=channel/stable/windows; list=$web/manifest.json; "
            "linkMaps() { mkdir $game/maps && ln -s \"$other\" \"$game/maps/Größe XL\"; }; " +
            cause);
    if (const std::string changed = readFile(s.channel / "manifest.json");
        !changed.empty() && changed != manifest) {
        writeFile(s.channel / "manifest.sig", ca::kit::signText(changed, s.privateKey));
    }
}

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

// At a start, or in a launcher that found all well before.
TEST_P(FailedJob, LeavesTheInstallationAsItWas) {
    const Row& row = GetParam();
    if (!programRunner().empty() && row.name == std::string_view("OtherCoding")) {
        GTEST_SKIP() << "Wine undoes no coding, so none can be wrong";
    }
    for (const Road road : {start, refresh, repair}) {
        SCOPED_TRACE(road);
        Scenario s;
        if (road != start) {
            s.makeCurrent();
            s.begin(start);
            s.see(current());
            s.makeOld();
        }
        if (!row.directives.empty()) {
            s.serve(row.directives);
        }
        bringAbout(s, row.cause);
        s.remember();
        s.begin(road);
        auto expected =
            look(ServiceUnavailable, "UPDATE SERVICE UNAVAILABLE",
                 row.detail + " // ONLINE LOGIN STILL REQUIRED", road == start ? "" : "1.4.2");
        if (row.ending == Failed) {
            expected = look(Failed, "UPDATE FAILED - TRY AGAIN", row.detail);
        }
        expected.progressDone = row.progress;
        expected.progressTotal = row.ending == Failed ? 4000 : 0;
        s.see(expected);
        EXPECT_EQ(s.changes(), row.changes);
        // the game is as playable as before
        road == refresh ? s.close() : s.play(road == start ? "" : "Return");
        EXPECT_EQ(s.changes(), row.changes);
    }
}

INSTANTIATE_TEST_SUITE_P(
    , FailedJob,
    testing::Values(
        Row{"NoServer", Offline, "rm $server", "update_server_not_configured"},
        Row{"BlankServer", Offline, "printf ' \r\n\t' >$server", "update_server_not_configured"},
        Row{"InvalidUrl", Offline, "echo ftp//nowhere >$server", "invalid_update_url"},
        Row{"NobodyListens", Offline, "echo http://127.0.0.1:1 >$server",
            "winhttp_send_failed_12029 // direct:winhttp_send_failed_12029"},
        Row{"NoManifest", Offline, "rm $list", "http_404 // direct:http_404"},
        Row{"NoSignature", Offline, "rm $web/manifest.sig", "http_404 // direct:http_404"},
        Row{"NoKey", Offline, "rm $key", "update_public_key_missing"},
        Row{"OtherKey", Offline, "echo >>$key", "update_public_key_fingerprint_mismatch"},
        Row{"NoHex", Offline, "echo 0x12 >$web/manifest.sig", "manifest_signature_invalid_hex"},
        Row{"OtherText", Offline, "echo 12 >$web/manifest.sig", "manifest_signature_verify_failed"},
        Row{"OtherChannel", Offline, "sed -i s/stable/beta/ $list",
            "manifest_channel_or_platform_mismatch"},
        Row{"OtherProduct", Offline, "sed -i s/cold-anchor/anchor/ $list",
            "manifest_header_invalid"},
        Row{"UnsafePath", Offline, "sed -i s,data/first,../first, $list", "manifest_file_invalid"},
        Row{"NoFiles", Offline, "sed -i s/files/file/ $list", "manifest_has_no_files"},
        Row{"NoAnswer",
            Offline,
            ":",
            "winhttp_receive_failed_12152 // direct:winhttp_receive_failed_12152",
            {},
            0,
            "location ~ json$ { return 444; }"},
        Row{"OtherCoding", Failed, ":", "winhttp_read_failed", begun, 1000,
            "location ~ /maps/ { add_header Content-Encoding gzip; }"},
        Row{"NotServed", Failed, "rm -r $web/files/maps", "http_404 // direct:http_404", begun,
            1000},
        Row{"BelowAFile", Failed, "sed -i s,maps/.*pak,data/first.dat/x, $list",
            "download_destination_unwritable", begun, 1000},
        Row{"OtherBytes", Failed, "sed -i y/m/x/ $web/files/maps/*/*",
            "download_hash_mismatch:" + mole, begun, 4000},
        Row{"WorkFolder", Failed, "touch $game/.coldanchor-update", "update_workdir_failed"},
        Row{"Folder", Failed, "touch $game/maps", "update_destination_failed:" + mole, undone,
            4000},
        Row{"Backup", Failed, "linkMaps; touch \"$other/Nord mole.pak\"",
            "update_backup_failed:" + mole, undoneMove, 4000},
        Row{"Install", Failed, "linkMaps", "update_install_failed:" + mole, undone, 4000},
        Row{"Marker", Failed, "rm $marker; mkdir $marker", "version_marker_write_failed", undoneAll,
            4000},
        Row{"OnePathTwice", Failed, "sed -i s,data/intact,data/first, $list",
            "update_duplicate_path:data/first.dat"}),
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

// The files are well and only the marker is behind, but can't be written.
TEST(FailedMarker, IsNoticed) {
    Scenario s;
    s.makeCurrent();
    fs::remove(s.data / "game_version");
    fs::create_directory(s.data / "game_version");
    s.begin(start);
    auto failed = look(Failed, "VERSION MARKER UPDATE FAILED", "EXPECTED 1.4.2 // FOUND 0.16.117");
    failed.updateAvailable = true;
    s.see(failed);
    EXPECT_EQ(s.changes(), Paths());
    fs::remove(s.data / "game_version");
    s.begin(refresh);
    s.see(look(Ready, "READY TO PLAY", "INSTALLED VERSION 1.4.2"));
    EXPECT_EQ(readFile(s.data / "game_version"), "1.4.2\n");
    s.close();
}
