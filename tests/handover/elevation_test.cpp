// An installation that the launcher's user can't write to: an unprivileged user where
// the tests run as root.
#include "handover/machine.h"

#include <sys/mount.h>
#include <unistd.h>

using namespace ca::test;

namespace {

// The one launcher that runs was started with "--elevated-update" and nothing more.
void expectElevated(const Machine& s) {
    ASSERT_EQ(s.launchers().size(), 1U);
    const std::string words = readFile("/proc/" + std::to_string(s.launchers()[0]) + "/cmdline");
    const std::size_t end = words.find_last_not_of('\0') + 1; // Wine leaves more of them behind
    EXPECT_TRUE(words.substr(0, end).ends_with(launcherName + '\0' + "--elevated-update")) << words;
}

} // namespace

// By a stand-in for the system's prompt, which waits until the folder can be written to.
TEST(Prompt, LeadsToASecondProcess) {
    Machine s;
    fs::permissions(writeFile(s.folder / "bin/pkexec", R"(#!/bin/sh
until [ -e "$0.granted" ]; do [ -e "$0" ] && sleep 0.01 || exit 1; done
exec env -i LD_PRELOAD="$LD_PRELOAD" ASAN_OPTIONS="$ASAN_OPTIONS" SDL_RENDER_DRIVER=software \
    SDL_FRAMEBUFFER_ACCELERATION=0 "$@"
)"),
                    fs::perms(0755));
    s.environment.push_back("PATH=" + (s.folder / "bin").string() + ":" + setting("PATH"));
    if (::geteuid() == 0) {
        s.wrapper = {"setpriv", "--reuid=nobody", "--regid=nogroup", "--clear-groups"};
    } else {
        fs::permissions(s.installation, fs::perms(0555));
    }
    s.begin(start);
    auto asking =
        look(HandingOver, "WINDOWS PERMISSION REQUIRED", "OPENING UAC TO INSTALL THE UPDATE...");
    asking.busy = asking.updateAvailable = true;
    asking.progressTotal = 4000;
    s.see(asking);
    change(s.folder.path(), "chmod -R a+rwX player/game; touch bin/pkexec.granted");
    s.waitForSuccessor();
    s.see(updated());
    s.expectCurrent();
    expectElevated(s);
    s.closeSuccessor();
}

TEST(Elevation, GoesThroughWindows) {
    if (programRunner().empty()) {
        GTEST_SKIP() << "the prompt is the host's own";
    }
    Machine s;
    s.serve(slowManifest); // time enough to make the folder writable
    const char* const folder = s.installation.c_str();
    if (::mount(folder, folder, nullptr, MS_BIND, nullptr) != 0) {
        GTEST_SKIP() << "only root can refuse itself the right to write";
    }
    EXPECT_EQ(::mount(nullptr, folder, nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr), 0);
    s.begin(start);
    EXPECT_TRUE(eventually([&] { // the second one has begun, and hasn't come to installing yet
        const auto ids = s.launchers();
        return std::any_of(ids.begin(), ids.end(), [](pid_t id) {
            return readFile("/proc/" + std::to_string(id) + "/cmdline").find("--elevated") !=
                   std::string::npos;
        });
    }));
    EXPECT_EQ(::umount2(folder, MNT_DETACH), 0);
    s.waitForSuccessor();
    s.see(updated());
    s.expectCurrent();
    expectElevated(s);
    s.closeSuccessor();
}
