// An installation that the launcher's user can't write to: an unprivileged user where
// the tests run as root.
#include "handover/machine.h"

#include <sys/mount.h>
#include <unistd.h>

using namespace ca::test;

namespace {

// Stands in for the system's prompt: tells what is to be run, and waits for the
// answer, its exit status.
constexpr const char* promptScript = R"(#!/bin/sh
cd "$(dirname "$0")/../prompt" || exit 1
for word in $$ "$@"; do printf '%s\n' "$word"; done >draft && mv draft asked
until [ -e answer ]; do [ -e "$0" ] && sleep 0.01 || exit 1; done
read -r status <answer && rm answer && exit "$status"
)";

struct LimitedPlayer : Machine {
    LimitedPlayer() {
        fs::permissions(writeFile(folder / "bin/pkexec", promptScript), fs::perms(0755));
        fs::create_directory(prompt);
        fs::permissions(prompt, fs::perms(0777));
        environment.push_back("PATH=" + (folder / "bin").string() + ":" + setting("PATH"));
        if (::geteuid() == 0) {
            wrapper = {"setpriv", "--reuid=nobody", "--regid=nogroup", "--clear-groups"};
        } else {
            fs::permissions(installation, fs::perms(0555));
        }
    }
    ~LimitedPlayer() { fs::permissions(installation, fs::perms(0755)); }

    void answer(int status) const {
        fs::remove(prompt / "asked");
        writeFile(prompt / "draft", std::to_string(status) + "\n");
        fs::rename(prompt / "draft", prompt / "answer");
    }
    // Runs what is asked for as the administrator would be made to, on the prompt's own streams.
    std::unique_ptr<ca::demo::Process> grant() const {
        std::vector<std::string> command{"env", "-i", "SDL_RENDER_DRIVER=software",
                                         "SDL_FRAMEBUFFER_ACCELERATION=0"};
        // what a sanitized build is started with
        for (const char* name : {"LD_PRELOAD", "ASAN_OPTIONS"}) {
            if (const char* value = std::getenv(name)) {
                command.push_back(name + std::string("=") + value);
            }
        }
        command.insert(command.end(), {"sh", "-c", "exec \"$@\" >/proc/$0/fd/1 2>/proc/$0/fd/2"});
        // the window says so before
        EXPECT_TRUE(eventually([this] { return fs::exists(prompt / "asked"); }));
        std::istringstream asked(readFile(prompt / "asked"));
        for (std::string word; std::getline(asked, word);) {
            command.push_back(word);
        }
        fs::permissions(installation, fs::perms(0755));
        return std::make_unique<ca::demo::Process>(command);
    }

    fs::path prompt = folder / "prompt";
};

ca::job::SharedSnapshot asking() {
    auto prompt =
        look(HandingOver, "WINDOWS PERMISSION REQUIRED", "OPENING UAC TO INSTALL THE UPDATE...");
    prompt.busy = prompt.updateAvailable = true;
    prompt.progressTotal = 4000;
    return prompt;
}

// The one launcher that runs was started with "--elevated-update" and nothing more.
void expectElevated(const Machine& s) {
    ASSERT_EQ(s.launchers().size(), 1U);
    const std::string words = readFile("/proc/" + std::to_string(s.launchers()[0]) + "/cmdline");
    const std::size_t end = words.find_last_not_of('\0') + 1; // Wine leaves more of them behind
    EXPECT_TRUE(words.substr(0, end).ends_with(launcherName + '\0' + "--elevated-update")) << words;
}

} // namespace

TEST(Prompt, CanBeRefusedAndComesAgain) {
    LimitedPlayer s;
    auto denied =
        look(Failed, "UPDATE PERMISSION DENIED", "WINDOWS UAC WAS CANCELLED OR COULD NOT START");
    denied.updateAvailable = true;
    denied.progressTotal = 4000;
    for (const int status : {126, 127}) {
        s.begin(status == 126 ? start : refresh);
        s.see(asking());
        s.answer(status);
        s.see(denied);
    }
    EXPECT_EQ(s.changes(), Paths());
    s.close();
}

TEST(Prompt, LeadsToASecondProcess) {
    LimitedPlayer s;
    s.begin(start);
    s.see(asking());
    const auto elevated = s.grant();
    s.waitForSuccessor();
    s.see(updated());
    s.expectCurrent();
    expectElevated(s);
    fs::remove(s.prompt / "asked");
    s.makeOld();
    s.begin(refresh); // the rights last for the whole run
    s.see(updated());
    s.expectCurrent();
    EXPECT_FALSE(fs::exists(s.prompt / "asked"));
    s.closeSuccessor();
    EXPECT_EQ(elevated->wait(std::chrono::seconds(20)), 0);
    s.answer(0);
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
