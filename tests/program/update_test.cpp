#include "program/scenario.h"

using namespace ca::test;

// Slow enough to look at: two seconds or more for the file of 3,000 bytes.
static constexpr const char* slowServer = "location ~ /files/ { limit_rate 1k; }";

TEST(Update, BringsAnInstallationUpToDateOnce) {
    Scenario s;
    fs::copy_file(s.installation / "ColdAnchor.exe", s.tree / "ColdAnchor.exe");
    writeFile(s.installation / "ColdAnchor.exe", "an old game");
    const std::string deep =
        "maps/" + std::string(100, 'd') + "/" + std::string(100, 'e') + "/chart.dat";
    writeFile(s.tree / deep, "a path that no program had once");
    s.release.mandatory = true;
    s.release.notes =
        "Cold Anchor v1.4.2\nADDED\n- A lighthouse whose keeper trades at night, if he is awake.";
    s.publish();
    s.begin(start);
    auto ready = updated();
    ready.patchNotes = std::make_shared<std::string>(s.release.notes);
    s.see(ready);
    s.expectCurrent();
    const std::string backup = "game/.coldanchor-update/backup-/";
    EXPECT_EQ(s.changes(),
              (Paths{backup + "ColdAnchor.exe", backup + "data/first.dat", "game/ColdAnchor.exe",
                     "game/data/first.dat", "game/data/game_version",
                     "game/maps/Größe XL/Nord mole.pak", "game/" + deep}));
    s.close();

    const auto lastWrite = fs::last_write_time(s.installation);
    s.begin(start);
    ready.detailText = current().detailText;
    ready.progressTotal = 0;
    s.see(ready);
    EXPECT_EQ(s.changes(), Paths());
    EXPECT_EQ(fs::last_write_time(s.installation), lastWrite);
    const Paths requests = s.requests();
    EXPECT_EQ(Paths(requests.begin() + 6, requests.end()),
              (Paths{"/stable/windows/manifest.json", "/stable/windows/manifest.sig"}));
    s.play("Return");
    EXPECT_EQ(s.changes(), Paths());
}

// The whole game, by a launcher that has been installed and nothing more.
TEST(Update, ComesBySecureConnectionsAlone) {
    Scenario s;
    change(s.folder.path(), R"(
        new='-newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes'
        for name in known unknown; do
            openssl req -x509 $new -subj "/CN=$name $$" -keyout $name.key -out $name.pem
        done 2>made
        issue() { # NAME HOST DAYS AUTHORITY
            openssl req $new -subj /CN=$2 -addext subjectAltName=DNS:$2 -keyout $1 -out request
            openssl x509 -req -in request -copy_extensions copy -days $3 -CA $4.pem -CAkey $4.key -CAcreateserial >>$1
        } 2>made
        issue good localhost 2 known
        issue unknown localhost 2 unknown
        issue other anchor.example 2 known
        issue expired localhost -1 known
        openssl x509 -in known.pem -outform der -out known.der)");
    s.wrapper = {"env", "SSL_CERT_FILE=" + (s.folder / "known.pem").string()};
    if (!programRunner().empty()) {
        ca::kit::Process trust(
            commandOf(builtProgram("trust.exe"), {shownPath(s.folder / "known.der")}));
        EXPECT_EQ(trust.wait(std::chrono::seconds(20)), 0);
    }
    for (const char* file : {"first.dat", "intact.dat", "game_version"}) {
        fs::remove(s.data / file);
    }
    // Wine has one number for all that is wrong with a certificate.
    const std::string refused =
        programRunner().empty() ? "winhttp_send_failed_12175" : "winhttp_send_failed_12157";
    for (const char* certificate : {"unknown", "other", "expired"}) {
        SCOPED_TRACE(certificate);
        s.serve({}, s.folder / certificate);
        s.begin(start);
        s.see(look(ServiceUnavailable, "UPDATE SERVICE UNAVAILABLE",
                   refused + " // direct:" + refused + " // ONLINE LOGIN STILL REQUIRED", ""));
        EXPECT_EQ(s.requests(), Paths());
        EXPECT_EQ(s.changes(), Paths());
        s.close();
    }
    s.serve({}, s.folder / "good");
    s.begin(start);
    s.see(updated());
    s.expectCurrent();
    s.close();
}

TEST(Update, ShowsItsStepsAndTakesNoInput) {
    Scenario s;
    s.makeCurrent();
    s.serve(slowServer);
    for (const Road road : {start, refresh, repair}) {
        SCOPED_TRACE(road);
        fs::remove_all(s.installation / "maps");
        s.holdServer(true);
        s.begin(road);
        s.tryInputs(look(Checking,
                         road == repair ? "CHECKING GAME FILES..." : "CHECKING FOR UPDATES...", "",
                         road == start ? "" : "1.4.2"));
        s.tryInputs(look(Updating,
                         road == repair ? "REPAIRING GAME FILES..." : "DOWNLOADING UPDATE...",
                         "1 FILES REQUIRE UPDATE"));
        s.see(updated());
        EXPECT_EQ(s.requests().size(), 3 * (static_cast<std::size_t>(road) + 1));
    }
    s.play();
}

TEST(Update, IsRequiredWhereTheChannelSaysSo) {
    using Row = std::tuple<bool, const char*, bool>;
    for (const auto& [mandatory, minimum, required] :
         {Row(true, "", true), Row(false, "1.4.1.1", true), Row(false, "1.4.1", false)}) {
        SCOPED_TRACE(minimum);
        Scenario s;
        s.release.mandatory = mandatory;
        s.release.minimumOnlineVersion = minimum;
        s.publish();
        fs::rename(s.channel / "files/data/first.dat", s.folder / "elsewhere");
        s.begin(start);
        auto expected = look(Failed, "UPDATE FAILED - TRY AGAIN", "http_404 // direct:http_404");
        expected.updateRequired = required;
        expected.progressTotal = 4000;
        s.see(expected);
        if (required) {
            s.clickMain();
        }

        fs::remove(s.data / "update_server.txt"); // a check that fails changes nothing of that
        s.begin(refresh);
        expected = look(ServiceUnavailable, "UPDATE SERVICE UNAVAILABLE",
                        "update_server_not_configured // ONLINE LOGIN STILL REQUIRED");
        expected.updateRequired = required;
        expected.updateAvailable = true;
        s.see(expected);
        if (required) {
            display::press("Return");
        }

        fs::rename(s.folder / "elsewhere", s.channel / "files/data/first.dat");
        s.serve(slowServer);
        s.begin(repair);
        expected = look(Updating, "REPAIRING GAME FILES...", "2 FILES REQUIRE UPDATE");
        expected.updateRequired = required;
        s.tryInputs(expected);
        s.see(updated());
        s.play();
    }
}

TEST(Update, LeavesANewerInstallationAlone) {
    Scenario s;
    s.release.mandatory = true;
    s.publish();
    writeFile(s.data / "game_version", "2.0\r\n");
    const auto blocked =
        look(Ready, "READY TO PLAY", "INSTALLED 2.0 // SERVER 1.4.2 // DOWNGRADE BLOCKED");
    s.begin(start);
    s.see(blocked);
    s.begin(repair);
    EXPECT_TRUE(eventually([&] { return s.requests().size() == 4; }));
    s.see(blocked);
    EXPECT_EQ(s.changes(), Paths());
    s.play();
}
