// Jobs that end badly, each by a real cause and on every road that leads to a job.
#include "program/scenario.h"

#include <gtest/gtest.h>

using namespace ca::test;
using enum ca::job::JobState;
namespace fs = std::filesystem;

namespace {

struct Row {
    const char* name;
    ca::job::JobState ending;
    std::string cause; // shell commands; a changed manifest is signed anew
    std::string detail;
    Paths changes = {};
    std::uint64_t progress = 0; // of 4,000 bytes
};

void bringAbout(const Scenario& s, const std::string& cause) {
    const std::string manifest = readFile(s.channel / "manifest.json");
    const std::string folders = "cd '" + s.folder.path().string() + "'; other='" + s.otherVolume.path().string() +
                                "'; game=player/game; server=$game/data/update_server.txt; web=channel/stable/windows; "
                                "key=$game/data/update_public_key.pem; maps=\"$game/maps/Größe XL\"; ";
    EXPECT_EQ(std::system((folders + cause).c_str()), 0);
    if (const std::string changed = readFile(s.channel / "manifest.json"); !changed.empty() && changed != manifest)
        writeFile(s.channel / "manifest.sig", ca::demo::signText(changed, s.privateKey));
}

const std::string mole = "maps/Größe XL/Nord mole.pak";
const std::string backup = "game/.coldanchor-update/backup-/", stage = "game/.coldanchor-update/stage-/";
const Paths undone{backup + "data/", stage + "data/", stage + mole};
const Paths undoneWithBackup{backup + "data/", backup + "maps/Größe XL/", stage + "data/", stage + mole};
const Paths undoneAll{backup + "data/", stage + "data/", stage + "maps/Größe XL/", "game/maps/Größe XL/"};

class FailedJob : public testing::TestWithParam<Row> {};

} // namespace

// At a start, or in a launcher that found all well before.
TEST_P(FailedJob, LeavesTheInstallationAsItWas) {
    const Row& row = GetParam();
    for (const Road road : {start, refresh, repair}) {
        SCOPED_TRACE(road);
        Scenario s;
        if (road != start) {
            s.makeCurrent();
            s.begin(start);
            s.see(look(Ready, "READY TO PLAY", "VERSION 1.4.2 // stable"));
            s.makeOld();
        }
        bringAbout(s, row.cause);
        s.remember();
        s.begin(road);
        auto expected = look(ServiceUnavailable, "UPDATE SERVICE UNAVAILABLE",
                             row.detail + " // ONLINE LOGIN STILL REQUIRED", road == start ? "" : "1.4.2");
        if (row.ending == Failed)
            expected = look(Failed, "UPDATE FAILED - TRY AGAIN", row.detail);
        expected.progressDone = row.progress;
        expected.progressTotal = row.ending == Failed ? 4000 : 0;
        s.see(expected);
        EXPECT_EQ(s.changes(), row.changes);
        road == refresh ? s.close() : s.play(road == start ? "" : "Return"); // the game is as playable as before
        EXPECT_EQ(s.changes(), row.changes);
    }
}

INSTANTIATE_TEST_SUITE_P(
    , FailedJob,
    testing::Values(
        Row{"NoServer", ServiceUnavailable, "rm $server", "update_server_not_configured"},
        Row{"BlankServer", ServiceUnavailable, "printf ' \r\n\t' >$server", "update_server_not_configured"},
        Row{"InvalidUrl", ServiceUnavailable, "echo ftp//nowhere >$server", "invalid_update_url"},
        Row{"NobodyListens", ServiceUnavailable, "echo http://127.0.0.1:1 >$server",
            "winhttp_send_failed_12029 // direct:winhttp_send_failed_12029"},
        Row{"NoManifest", ServiceUnavailable, "rm $web/manifest.json", "http_404 // direct:http_404"},
        Row{"NoSignature", ServiceUnavailable, "rm $web/manifest.sig", "http_404 // direct:http_404"},
        Row{"NoKey", ServiceUnavailable, "rm $key", "update_public_key_missing"},
        Row{"OtherKey", ServiceUnavailable, "echo >>$key", "update_public_key_fingerprint_mismatch"},
        Row{"NoHex", ServiceUnavailable, "echo 0x12 >$web/manifest.sig", "manifest_signature_invalid_hex"},
        Row{"OtherText", ServiceUnavailable, "echo 12 >$web/manifest.sig", "manifest_signature_verify_failed"},
        Row{"OtherChannel", ServiceUnavailable, "sed -i s/stable/beta/ $web/manifest.json",
            "manifest_channel_or_platform_mismatch"},
        Row{"OtherProduct", ServiceUnavailable, "sed -i s/cold-anchor/anchor/ $web/manifest.json",
            "manifest_header_invalid"},
        Row{"UnsafePath", ServiceUnavailable, "sed -i s,data/first,../first, $web/manifest.json",
            "manifest_file_invalid"},
        Row{"NoFiles", ServiceUnavailable, "sed -i s/files/file/ $web/manifest.json", "manifest_has_no_files"},
        Row{"NotServed", Failed, "rm -r $web/files/maps", "http_404 // direct:http_404", {backup}, 1000},
        Row{"OtherBytes",
            Failed,
            "sed -i y/m/x/ $web/files/maps/*/*",
            "download_hash_mismatch:" + mole,
            {backup},
            4000},
        Row{"WorkFolder", Failed, "touch $game/.coldanchor-update", "update_workdir_failed"},
        Row{"Folder", Failed, "touch $game/maps", "update_destination_failed:" + mole, undone, 4000},
        Row{"Backup", Failed, "mkdir $game/maps; ln -s \"$other\" \"$maps\"; touch \"$maps/Nord mole.pak\"",
            "update_backup_failed:" + mole, undoneWithBackup, 4000},
        Row{"Install", Failed, "mkdir $game/maps; ln -s \"$other\" \"$maps\"", "update_install_failed:" + mole, undone,
            4000},
        Row{"Marker", Failed, "rm $game/data/game_version; mkdir $game/data/game_version",
            "version_marker_write_failed", undoneAll, 4000},
        Row{"OnePathTwice", Failed, "sed -i 's,data/intact.dat,data/first.dat,' $web/manifest.json",
            "update_duplicate_path:data/first.dat"}),
    [](const auto& row) { return row.param.name; });

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
