// The job in this process, where another process takes over. The system starts nothing here.
#include "handover/machine.h"
#include "job/update_job.h"
#include "system/path.h"

#include <windows.h>

#include <shellapi.h>

using namespace ca::test;

static std::string started; // what, with which flags

BOOL CreateProcessW(LPCWSTR program, LPWSTR, LPSECURITY_ATTRIBUTES, LPSECURITY_ATTRIBUTES, BOOL,
                    DWORD flags, LPVOID, LPCWSTR, LPSTARTUPINFOW, LPPROCESS_INFORMATION) {
    started = ca::system::pathFromWide(program).filename().string() + " " + std::to_string(flags);
    return TRUE;
}

HINSTANCE ShellExecuteW(HWND, LPCWSTR verb, LPCWSTR, LPCWSTR parameters, LPCWSTR, INT) {
    started = (fs::path(verb) / parameters).string();
    return std::bit_cast<HINSTANCE>(std::intptr_t{42});
}

// The record's eleven fields after a job.
static std::string ending(const Scenario& s) {
    ca::job::Shared shared;
    shared.state.busy = true;
    started.clear();
    ca::job::runUpdateJob({&shared, s.installation, "stable", false, false});
    const ca::job::SharedSnapshot& state = shared.state;
    std::ostringstream text;
    text << static_cast<int>(state.jobState) << ", " << state.statusText << ", " << state.detailText
         << ", " << state.latestVersion << ", " << *state.patchNotes << ", " << state.progressDone
         << " of " << state.progressTotal << ", " << state.updateAvailable << state.updateRequired
         << state.busy << state.exitRequested;
    return text.str();
}

TEST(Ending, HandsOver) {
    Scenario s;
    s.release.mandatory = true;
    s.release.notes = "notes";
    writeFile(s.tree / launcherName, "12345");
    s.publish();
    const std::string id = std::to_string(::GetCurrentProcessId());
    const fs::path present = s.installation / (".coldanchor-write-test-" + id + ".tmp");
    writeFile(present, "not the write test's");
    EXPECT_EQ(ending(s), "6, WINDOWS PERMISSION REQUIRED, OPENING UAC TO INSTALL THE UPDATE..., "
                         "1.4.2, notes, 0 of 4005, 1111");
    EXPECT_EQ(started, "runas/--elevated-update");
    EXPECT_EQ(readFile(present), "not the write test's");

    fs::remove(present);
    EXPECT_EQ(ending(s), "6, LAUNCHER UPDATED, RESTARTING..., 1.4.2, notes, 4005 of 4005, 1111");
    EXPECT_EQ(started, helperName + " " + std::to_string(CREATE_NO_WINDOW));
}
