// Jobs in this process, whose whole records are compared. The system starts nothing here.
#include "handover/machine.h"
#include "job/update_job.h"
#include "system/path.h"

#include <windows.h>

#include <shellapi.h>

using namespace ca::test;

static std::string started; // what, with which flags or words
static bool startSucceeds = false;

BOOL CreateProcessW(LPCWSTR program, LPWSTR, LPSECURITY_ATTRIBUTES, LPSECURITY_ATTRIBUTES, BOOL,
                    DWORD flags, LPVOID, LPCWSTR, LPSTARTUPINFOW, LPPROCESS_INFORMATION) {
    const fs::path path = ca::system::pathFromWide(program);
    started = path.filename().string() + " " + std::to_string(flags);
    return startSucceeds ? TRUE : FALSE;
}

HINSTANCE ShellExecuteW(HWND, LPCWSTR verb, LPCWSTR, LPCWSTR parameters, LPCWSTR, INT) {
    started = (fs::path(verb) / parameters).string();
    return std::bit_cast<HINSTANCE>(std::intptr_t{startSucceeds ? 33 : 32});
}

namespace {

struct Job : Scenario {
    // The record's eleven fields after one more job.
    std::string run(bool elevated = false) {
        ca::job::SharedSnapshot& state = shared.state;
        state.busy = true;
        state.progressDone = state.progressTotal = 0;
        ca::job::runUpdateJob({&shared, installation, "stable", false, elevated});
        std::ostringstream text;
        text << static_cast<int>(state.jobState) << ", " << state.statusText << ", "
             << state.detailText << ", " << state.latestVersion << ", " << *state.patchNotes << ", "
             << state.progressDone << " of " << state.progressTotal << ", " << state.updateAvailable
             << state.updateRequired << state.busy << state.exitRequested;
        return text.str();
    }

    ca::job::Shared shared;
};

} // namespace

TEST(Ending, HandsOverOrStays) {
    Job s;
    s.release.mandatory = true;
    s.release.notes = "notes";
    writeFile(s.tree / launcherName, "12345");
    s.publish();
    const std::string id = std::to_string(::GetCurrentProcessId());
    const fs::path present = s.installation / (".coldanchor-write-test-" + id + ".tmp");
    writeFile(present, "not the write test's");
    struct Row {
        bool elevated;
        bool succeeds;
        std::string ending;
        std::string started;
    };
    const std::string prompt = "runas/--elevated-update",
                      helper = helperName + " " + std::to_string(CREATE_NO_WINDOW);
    for (const Row& row :
         {Row{false, false,
              "5, UPDATE PERMISSION DENIED, WINDOWS UAC WAS CANCELLED OR COULD NOT START, 1.4.2, "
              "notes, 0 of 4005, 1100",
              prompt},
          {true, false,
           "5, LAUNCHER SELF-UPDATE FAILED, COULD NOT START UPDATE HELPER, 1.4.2, notes, "
           "4005 of 4005, 1100",
           helper},
          {true, true, "6, LAUNCHER UPDATED, RESTARTING..., 1.4.2, notes, 5 of 5, 1111", helper},
          {false, true,
           "6, WINDOWS PERMISSION REQUIRED, OPENING UAC TO INSTALL THE UPDATE..., 1.4.2, notes, "
           "0 of 5, 1111",
           prompt}}) {
        startSucceeds = row.succeeds;
        s.shared.state.exitRequested = false;
        EXPECT_EQ(s.run(row.elevated), row.ending);
        EXPECT_EQ(started, row.started) << row.ending;
    }
    EXPECT_EQ(readFile(present), "not the write test's");
}

TEST(Ending, LeavesANewerInstallationAlone) {
    Job s;
    s.release.mandatory = true;
    s.publish();
    writeFile(s.data / "game_version", "2.0\r\n");
    s.remember();
    EXPECT_EQ(s.run(), "3, READY TO PLAY, INSTALLED 2.0 // SERVER 1.4.2 // DOWNGRADE BLOCKED, "
                       "1.4.2, , 0 of 0, 0000");
    EXPECT_EQ(s.changes(), Paths());
}

// The files are well and only the marker is behind.
TEST(Ending, NeedsTheMarker) {
    Job s;
    s.makeCurrent();
    fs::remove(s.data / "game_version");
    fs::create_directory(s.data / "game_version");
    EXPECT_EQ(s.run(), "5, VERSION MARKER UPDATE FAILED, EXPECTED 1.4.2 // FOUND 0.16.117, 1.4.2, "
                       ", 0 of 0, 1000");
    fs::remove(s.data / "game_version");
    EXPECT_EQ(s.run(), "3, READY TO PLAY, INSTALLED VERSION 1.4.2, 1.4.2, , 0 of 0, 0000");
    EXPECT_EQ(readFile(s.data / "game_version"), "1.4.2\n");
}

TEST(Ending, RequiresAnUpdateWhereTheChannelSaysSo) {
    using Row = std::tuple<bool, const char*, std::string>;
    for (const auto& [mandatory, minimum, required] :
         {Row(true, "", "1"), {false, "1.4.1.1", "1"}, {false, "1.4.1", "0"}}) {
        Job s;
        s.release.mandatory = mandatory;
        s.release.minimumOnlineVersion = minimum;
        s.publish();
        fs::rename(s.channel / "files/data/first.dat", s.folder / "elsewhere");
        EXPECT_EQ(s.run(), "5, UPDATE FAILED - TRY AGAIN, http_404 // direct:http_404, 1.4.2, , "
                           "0 of 4000, 1" +
                               required + "00");
        fs::remove(s.data / "update_server.txt"); // a check that fails changes nothing of that
        EXPECT_EQ(s.run(), "4, UPDATE SERVICE UNAVAILABLE, update_server_not_configured // ONLINE "
                           "LOGIN STILL REQUIRED, 1.4.2, , 0 of 0, 1" +
                               required + "00");
        fs::rename(s.folder / "elsewhere", s.channel / "files/data/first.dat");
        s.serve();
        EXPECT_EQ(s.run(),
                  "3, READY TO PLAY, INSTALLED VERSION 1.4.2, 1.4.2, , 4000 of 4000, 0000");
    }
}
