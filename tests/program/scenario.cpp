#include "program/scenario.h"

#include "launcher/screen.h"

#include <csignal>

const std::string_view ca::launcher::launcherVersion = PROGRAM_TEST_VERSION;

using namespace std::string_literals;

namespace ca::test {

namespace {

constexpr const char* localNotes = "FIXED\n- The fog lifts in the morning.";

// The screen's own drawing is held to its table elsewhere; here it says what the window must show.
Picture draw(const fs::path& installation, const job::SharedSnapshot& look) {
    static const Canvas& canvas = *new Canvas;
    launcher::drawScreen(canvas.renderer, installation, look, localNotes);
    return canvas.picture();
}

} // namespace

job::SharedSnapshot look(job::JobState state, const std::string& status, const std::string& detail,
                         const std::string& latest) {
    job::SharedSnapshot look{state, status, detail, latest, nullptr};
    look.busy = state == Checking || state == Updating;
    look.progressTotal = state == Updating ? 1 : 0;
    return look;
}

job::SharedSnapshot current() {
    return look(Ready, "READY TO PLAY", "VERSION 1.4.2 // stable");
}

job::SharedSnapshot updated() {
    auto ready = look(Ready, "READY TO PLAY", "INSTALLED VERSION 1.4.2");
    ready.progressDone = ready.progressTotal = 1;
    return ready;
}

Scenario::Scenario() {
    display::open();
    const std::string home = folder.path();
    environment = {"HOME=" + home,
                   "XDG_RUNTIME_DIR=" + home,
                   "LC_ALL=C.UTF-8",
                   "http_proxy=",
                   "LOCALAPPDATA=" + (player / "local").string(), // Wine has places of its own
                   "SDL_RENDER_DRIVER=software",
                   "SDL_FRAMEBUFFER_ACCELERATION=0"}; // no OpenGL
    release.version = "1.4.2";
    writeFile(tree / "data/first.dat", std::string(1000, '2'));
    writeFile(tree / "data/intact.dat", std::string(1000, 'i'));
    writeFile(tree / "maps/Größe XL/Nord mole.pak", std::string(3000, 'm'));
    makeCurrent();
    makeOld();
    writeFile(data / "patch_notes.txt", localNotes);
    fs::copy_file(testedBuild() / "dev_key/update_public_key.pem", data / "update_public_key.pem");
    fs::copy_file(builtProgram("ColdAnchorLauncher.exe"), installation / "ColdAnchorLauncher.exe");
    fs::copy_file(builtProgram("fake_game.exe"), installation / "ColdAnchor.exe");
    writeFile(installation / "save/settings_v01.cfg", "volume 3\n");
    writeFile(player / "local/ColdAnchor/saves/settings_v01.cfg", "volume 7\n");
    publish();
    serve();
}

void Scenario::makeOld() const {
    writeFile(data / "first.dat", std::string(900, '1'));
    fs::remove_all(installation / "maps");
    writeFile(data / "game_version", "1.4.1\n");
}

void Scenario::makeCurrent() const {
    fs::create_directories(installation);
    fs::copy(tree, installation,
             fs::copy_options::recursive | fs::copy_options::overwrite_existing);
    writeFile(data / "game_version", release.version + "\n");
}

void Scenario::serve(const std::string& directives, const fs::path& certificate) {
    server.reset();
    server = std::make_unique<kit::Nginx>(
        folder / "nginx", kit::NginxOptions{folder / "channel", 0, directives, certificate});
    writeFile(data / "update_server.txt", " " + server->url() + "\r\n");
}

void Scenario::begin(Road road) {
    if (road != start) {
        return display::click(road == refresh ? 920 : 780, 470);
    }
    remember();
    kit::ProcessOptions options;
    options.workingFolder = folder.path();
    options.output = folder / "output";
    options.environment = environment;
    std::vector<std::string> words = commandOf(installation / "ColdAnchorLauncher.exe");
    words.insert(words.begin(), wrapper.begin(), wrapper.end());
    launcher = std::make_unique<kit::Process>(words, options);
    EXPECT_TRUE(display::waitForWindow()) << readFile(folder / "output");
}

void Scenario::see(const job::SharedSnapshot& look) const {
    const bool shown = eventually([&] {
        Picture seen = display::picture();
        // each time: the marker's version is part of it
        const Picture expected = draw(installation, look);
        for (std::size_t at = 322 * 1040; look.jobState == Updating && at < 352 * 1040; ++at) {
            if (at % 1040 >= 720) {
                seen[at] = expected[at];
            }
        }
        return seen == expected;
    });
    EXPECT_TRUE(shown) << look.statusText << " // " << look.detailText << "\n"
                       << readFile(folder / "output");
}

void Scenario::holdServer(bool held) const {
    EXPECT_TRUE(eventually([this] { return !readFile(folder / "nginx/nginx.pid").empty(); }));
    ::kill(-std::stoi(readFile(folder / "nginx/nginx.pid")), held ? SIGSTOP : SIGCONT);
}

void Scenario::expectCurrent() const {
    for (const auto& [path, bytes] : contentsOf(tree)) {
        if (!path.ends_with('/')) {
            EXPECT_TRUE(readFile(installation / path) == bytes) << path;
        }
    }
    EXPECT_EQ(readFile(data / "game_version"), release.version + "\n");
}

void Scenario::expectEnd() const {
    EXPECT_EQ(launcher->wait(std::chrono::seconds(5)), 0);
    EXPECT_TRUE(eventually([] { return !display::findWindow(); }));
    EXPECT_EQ(readFile(folder / "output"), "");
}

void Scenario::close() {
    display::requestClose();
    expectEnd();
}

void Scenario::play(const std::string& key) {
    const fs::path report = installation / "game.report";
    key.empty() ? display::click(850, 550) : display::press(key);
    expectEnd();
    EXPECT_TRUE(eventually([&] { return !readFile(report).empty(); }));
    writeFile(installation / "game.stop", {});
    EXPECT_TRUE(eventually([&] { return readFile(report).ends_with("ended\n"); }));
    EXPECT_EQ(readFile(report), "argument " + shownPath(installation / "ColdAnchor.exe") + "\nin " +
                                    shownPath(installation / "") + "\nended\n");
    fs::remove(installation / "game.stop");
    fs::remove(report);
}

Contents Scenario::contents() const {
    Contents files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(player)) {
        std::string name = entry.path().lexically_relative(player).string();
        if (name == "game/.coldanchor-update/lock") {
            continue; // stays from the first installation on, and is always empty
        }
        if (name.starts_with("game/.coldanchor-update/")) {
            std::erase_if(name, [](char c) { return c >= '0' && c <= '9'; });
        }
        if (!entry.is_directory()) {
            files[name] = std::to_string(entry.last_write_time().time_since_epoch().count()) +
                          readFile(entry.path());
        } else if (fs::is_empty(entry.path())) {
            files[name + "/"] = {};
        }
    }
    return files;
}

Paths Scenario::requests() const {
    std::istringstream log(readFile(server->accessLog()));
    Paths targets;
    for (std::string method, target, rest; log >> method >> target && std::getline(log, rest);) {
        targets.push_back(target);
    }
    return targets;
}

} // namespace ca::test
