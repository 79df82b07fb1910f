#include "program/scenario.h"

using namespace ca::test;

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
        openssl req -x509 $new -subj "/CN=known $$" -keyout known.key -out known.pem 2>made
        issue() { # NAME HOST DAYS
            openssl req $new -subj /CN=$2 -addext subjectAltName=DNS:$2 -keyout $1 -out request
            openssl x509 -req -in request -copy_extensions copy -days $3 -CA known.pem -CAkey known.key -CAcreateserial >>$1
        } 2>made
        issue good localhost 2
        issue other anchor.example 2
        issue expired localhost 0 # over within the second; OpenSSL takes no less since 3.4
        openssl x509 -in known.pem -outform der -out known.der)");
    s.environment.push_back("SSL_CERT_FILE=" + (s.folder / "known.pem").string());
    if (!programRunner().empty()) {
        ca::kit::Process trust(
            commandOf(builtProgram("trust.exe"), {shownPath(s.folder / "known.der")}));
        EXPECT_EQ(trust.wait(std::chrono::seconds(20)), 0);
    }
    for (const char* file : {"first.dat", "intact.dat", "game_version"}) {
        fs::remove(s.data / file);
    }
    const std::string refused = "winhttp_send_failed_12175"; // Wine tells another number
    const bool native = programRunner().empty();
    for (const std::string& certificate : native ? Paths{"other", "expired"} : Paths()) {
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

TEST(Update, ShowsItsSteps) {
    Scenario s;
    s.makeCurrent();
    s.serve("location ~ /files/ { limit_rate 1k; }"); // two seconds for the file of 3,000 bytes
    for (const Road road : {start, refresh, repair}) {
        SCOPED_TRACE(road);
        fs::remove_all(s.installation / "maps");
        s.holdServer(true);
        s.begin(road);
        s.see(look(Checking, road == repair ? "CHECKING GAME FILES..." : "CHECKING FOR UPDATES...",
                   "", road == start ? "" : "1.4.2"));
        s.holdServer(false);
        s.see(look(Updating, road == repair ? "REPAIRING GAME FILES..." : "DOWNLOADING UPDATE...",
                   "1 FILES REQUIRE UPDATE"));
        s.see(updated());
    }
    s.play();
}
