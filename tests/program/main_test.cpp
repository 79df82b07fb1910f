// The launcher's main and frame loop between stand-ins that record what the two call: SDL, the
// job, the game, the notes, the player's files and the drawing.
#include "install/paths.h"
#include "install/user_data.h"
#include "job/begin_update_job.h"
#include "launcher/frame_loop.h"
#include "launcher/game.h"
#include "launcher/notes.h"
#include "launcher/screen.h"
#include "unit/temporary_folder.h"

#include <SDL3_image/SDL_image.h>
#include <deque>
#include <gtest/gtest.h>

int launcherMain(int argc, char* argv[]); // the name that main has here

using namespace ca;

static std::string calls, failing;   // every call's name and details; the name of one that fails
static std::deque<SDL_Event> events; // for the first frame; the second one gets a quit event
static job::SharedSnapshot writtenByJob; // at once when it begins

static float displayScale = 1;
static SDL_Rect displayRoom{0, 0, 1920, 1080};
static SDL_Point windowSize;
static SDL_EventFilter eventWatch;

static bool call(const std::string& name, const std::string& details = {}) {
    calls += name + (details.empty() ? "" : " " + details) + "\n";
    return name != failing;
}

extern "C" {
bool SDL_Init(SDL_InitFlags flags) {
    return call("Init", std::to_string(flags));
}
SDL_Window* SDL_CreateWindow(const char* title, int width, int height, SDL_WindowFlags flags) {
    std::ostringstream details;
    details << title << ' ' << width << ' ' << height << ' ' << flags;
    windowSize = {width, height};
    return call("CreateWindow", details.str()) ? reinterpret_cast<SDL_Window*>(&events) : nullptr;
}
SDL_Renderer* SDL_CreateRenderer(SDL_Window*, const char*) {
    return call("CreateRenderer") ? reinterpret_cast<SDL_Renderer*>(&events) : nullptr;
}
bool SDL_SetRenderLogicalPresentation(SDL_Renderer*, int width, int height,
                                      SDL_RendererLogicalPresentation mode) {
    return call("Present",
                std::to_string(width) + " " + std::to_string(height) + " " + std::to_string(mode));
}
SDL_DisplayID SDL_GetDisplayForWindow(SDL_Window*) {
    return 1;
}
bool SDL_GetDisplayUsableBounds(SDL_DisplayID, SDL_Rect* bounds) {
    *bounds = displayRoom;
    return true;
}
bool SDL_GetWindowBordersSize(SDL_Window*, int* top, int*, int*, int*) {
    *top = 30;
    return true;
}
float SDL_GetWindowDisplayScale(SDL_Window*) {
    return displayScale;
}
bool SDL_GetWindowSize(SDL_Window*, int* width, int* height) {
    *width = windowSize.x;
    *height = windowSize.y;
    return true;
}
bool SDL_SetWindowSize(SDL_Window*, int width, int height) {
    windowSize = {width, height};
    return call("Resize", std::to_string(width) + " " + std::to_string(height));
}
bool SDL_SetWindowPosition(SDL_Window*, int, int) {
    return call("Centre");
}
bool SDL_AddEventWatch(SDL_EventFilter filter, void*) {
    eventWatch = filter;
    return true;
}
void SDL_RemoveEventWatch(SDL_EventFilter filter, void*) {
    EXPECT_TRUE(filter == eventWatch);
}
bool SDL_ConvertEventToRenderCoordinates(SDL_Renderer*, SDL_Event* event) {
    if (event->type == SDL_EVENT_MOUSE_BUTTON_DOWN) {
        event->button.x /= displayScale;
        event->button.y /= displayScale;
    }
    return true;
}
bool SDL_SetRenderVSync(SDL_Renderer*, int interval) {
    return call("SetRenderVSync", std::to_string(interval));
}
SDL_Surface* IMG_Load(const char* file) {
    static SDL_Surface image;
    return call("Load", file) ? &image : nullptr;
}
bool SDL_SetWindowIcon(SDL_Window*, SDL_Surface*) {
    return call("SetWindowIcon");
}
void SDL_DestroySurface(SDL_Surface*) {
    call("DestroySurface");
}
void SDL_DestroyRenderer(SDL_Renderer*) {
    call("DestroyRenderer");
}
void SDL_DestroyWindow(SDL_Window*) {
    call("DestroyWindow");
}
void SDL_Quit() {
    call("Quit");
}
bool SDL_PollEvent(SDL_Event* event) {
    if (events.empty()) {
        events.push_back({SDL_EVENT_QUIT});
        return false;
    }
    *event = events.front();
    events.pop_front();
    return true;
}
}

void install::migrateUserData() {
    call("migrate");
}
void job::beginUpdateJob(Shared& shared, const std::filesystem::path&, const std::string& channel,
                         bool repair, bool elevated) {
    call(repair ? "repair" : "check", channel + (elevated ? " elevated" : ""));
    shared.state = writtenByJob;
}
std::string launcher::loadLocalPatchNotes(const std::filesystem::path&) {
    call("readNotes");
    return "notes";
}
std::string launcher::gameExecutableName() {
    return "game";
}
bool launcher::startGame(const std::filesystem::path&) {
    return call("play");
}
void launcher::drawScreen(SDL_Renderer*, const std::filesystem::path&,
                          const job::SharedSnapshot& snapshot, const std::string& notes) {
    call("draw", std::to_string(static_cast<int>(snapshot.jobState)) + " " + snapshot.statusText +
                     ", " + snapshot.detailText + ", " + notes);
}

namespace {

std::string run(std::vector<std::string> words, int status) {
    std::vector<char*> pointers;
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    events.clear();
    calls.clear();
    EXPECT_EQ(launcherMain(static_cast<int>(pointers.size()), pointers.data()), status);
    return calls;
}

SDL_Event click(float x, float y, Uint8 button = SDL_BUTTON_LEFT) {
    SDL_Event event{SDL_EVENT_MOUSE_BUTTON_DOWN};
    event.button.button = button;
    event.button.x = x;
    event.button.y = y;
    return event;
}

SDL_Event press(SDL_Scancode key) {
    SDL_Event event{SDL_EVENT_KEY_DOWN};
    event.key.scancode = key;
    return event;
}

} // namespace

TEST(Main, TakesItsStepsInOrder) {
    writtenByJob = {};
    const std::string init = "Init 32\n",
                      window = init + "CreateWindow Cold Anchor Launcher 1040 640 0\n",
                      renderer = window + "CreateRenderer\n",
                      image = install::iconFile(install::executableDir()).string(),
                      load =
                          renderer + "SetRenderVSync 1\nPresent 1040 640 2\nLoad " + image + "\n",
                      icon = load + "SetWindowIcon\nDestroySurface\n",
                      rest = "migrate\ncheck stable\nreadNotes\n"
                             "draw 0 STARTING..., , notes\ndraw 0 STARTING..., , notes\n"
                             "DestroyRenderer\nDestroyWindow\nQuit\n";
    using Row = std::tuple<const char*, int, std::string>;
    for (const auto& [name, status, expected] :
         {Row("", 0, icon + rest),
          {"Init", 1, init},
          {"CreateWindow", 2, window + "Quit\n"},
          {"CreateRenderer", 3, renderer + "DestroyWindow\nQuit\n"},
          {"SetRenderVSync", 0, icon + rest},
          {"Load", 0, load + rest}}) {
        SCOPED_TRACE(name);
        failing = name;
        EXPECT_EQ(run({"launcher"}, status), expected);
    }
}

TEST(Main, TakesNoOrdersFromTheEnvironment) {
    const std::vector<std::string> orders{"SDL3_DYNAMIC_API", "SDL_OPENGL_LIBRARY",
                                          "SDL_VIDEO_DUMMY_SAVE_FRAMES", "sdl_egl_library"};
    for (const std::string& name : orders) {
        ::setenv(name.c_str(), "x", 1);
    }
    ::setenv("SDL_RENDER_DRIVER", "software", 1);
    failing.clear();
    run({"launcher"}, 0);
    for (const std::string& name : orders) {
        EXPECT_EQ(std::getenv(name.c_str()), nullptr) << name;
    }
    EXPECT_STREQ(std::getenv("SDL_RENDER_DRIVER"), "software");
}

TEST(Main, KnowsOneOption) {
    failing.clear();
    using Row = std::pair<std::vector<std::string>, bool>;
    for (const auto& [words, elevated] :
         {Row({"--elevated-update"}, false),
          {{"launcher", "a", "--elevated-update"}, true},
          {{"launcher", "--elevated-updates", "--elevated", "", "--ELEVATED-UPDATE"}, false}}) {
        EXPECT_EQ(run(words, 0).find(" elevated") != std::string::npos, elevated) << words.back();
    }
}

TEST(Main, FitsTheWindowToItsDisplay) {
    struct Row {
        float scale;
        SDL_Rect room;
        std::string opened;
        std::string moved; // then to a display with twice the scale
    };
    const SDL_Rect large{0, 0, 3840, 2160}, usual{0, 0, 1920, 1080}, small{0, 0, 1024, 600};
    failing.clear();
    for (const Row& row : {Row{1, large, "", "Resize 2080 1280\n"},
                           {0.5F, large, "", ""},
                           {1.25F, large, "Resize 1300 800\nCentre\n", "Resize 2600 1600\n"},
                           {1.5F, usual, "Resize 1560 960\nCentre\n", "Resize 1706 1050\n"},
                           {1.5F, small, "", ""}}) {
        SCOPED_TRACE(row.scale);
        displayScale = row.scale;
        displayRoom = row.room;
        EXPECT_NE(run({"launcher"}, 0).find("Present 1040 640 2\n" + row.opened + "Load"),
                  std::string::npos);
        displayScale *= 2;
        calls.clear();
        SDL_Event moved{SDL_EVENT_WINDOW_DISPLAY_SCALE_CHANGED};
        eventWatch(nullptr, &moved);
        EXPECT_EQ(calls, row.moved);
    }
    displayScale = 1;
    displayRoom = usual;
}

TEST(FrameLoop, HandlesEveryEventAndDrawsOnceMore) {
    job::SharedSnapshot ready, busy, required, leaving;
    ready.statusText = "ready";
    required.statusText = "required";
    required.updateRequired = true;
    busy.statusText = "busy";
    busy.busy = true;
    writtenByJob = leaving = busy;
    leaving.exitRequested = true;
    const test::TemporaryFolder folder;
    const std::string game = (folder / "game").string(), check = "check stable elevated\n",
                      repair = "repair stable elevated\n",
                      playing = "play\ndraw 0 ready, , notes\n", working = "draw 0 busy, , notes\n",
                      missing = "draw 5 GAME EXECUTABLE MISSING, " + game + ", notes\n";
    const SDL_Event quit{SDL_EVENT_QUIT}, onPlay = click(850, 550), onRepair = click(780, 470),
                                          onRefresh = click(920, 470),
                                          enter = press(SDL_SCANCODE_RETURN);
    struct Row {
        job::SharedSnapshot state;
        std::deque<SDL_Event> events;
        std::string expected;
        const char* failing = "";
        float scale = 1; // of the display
    };
    for (const Row& row :
         {// the edges of the buttons, and beside them
          Row{ready, {click(720, 515)}, playing},
          {ready, {click(980, 577)}, playing},
          {ready, {click(720, 452)}, repair + working + working},
          {ready, {click(846, 494)}, repair + working + working},
          {ready, {click(854, 452)}, check + working + working},
          {ready, {click(980, 494)}, check + working + working},
          {ready, {click(1960, 988)}, check + working + working, "", 2},
          {ready,
           {click(719, 540), click(981, 540), click(850, 514), click(850, 578), click(719, 470),
            click(847, 470), click(853, 470), click(981, 470), click(780, 451), click(920, 495),
            click(850, 550, SDL_BUTTON_RIGHT), press(SDL_SCANCODE_KP_ENTER)},
           "draw 0 ready, , notes\ndraw 0 ready, , notes\n"},
          {ready, {enter}, playing},
          // several in one batch
          {ready, {onPlay, onPlay, enter, onRefresh}, playing},
          {ready, {quit, onPlay}, playing},
          {ready, {quit, onRefresh}, check + working},
          {ready, {onRepair, onPlay, enter, onRefresh}, repair + working + working},
          // what the record says
          {busy, {onPlay, enter, onRefresh, onRepair}, working + working},
          {required, {onPlay, enter, onRefresh}, check + working + working},
          {leaving, {}, working},
          // a game that doesn't start
          {ready, {onPlay}, "play\n" + missing + missing, "play"},
          {ready, {onPlay}, missing + missing, "file"}}) {
        SCOPED_TRACE(row.expected);
        failing = row.failing;
        displayScale = row.scale;
        std::filesystem::remove(game);
        if (failing != "file") {
            test::writeFile(game, {});
        }
        job::Shared shared{{}, row.state};
        events = row.events;
        calls.clear();
        launcher::LauncherState launcher{true,     nullptr, nullptr, folder.path(),
                                         "stable", &shared, "notes"};
        launcher::runFrameLoop(launcher);
        EXPECT_EQ(calls, row.expected);
    }
}
