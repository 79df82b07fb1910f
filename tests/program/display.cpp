#include "program/display.h"

#include "shared/process.h"
#include "support/programs.h"
#include "unit/temporary_folder.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <unistd.h>

namespace ca::test::display {

namespace {

std::unique_ptr<kit::Process> server, manager;
_XDisplay* connection = nullptr;
unsigned long window = 0;

int xdotool(std::vector<std::string> arguments, const std::filesystem::path& output = {}) {
    kit::ProcessOptions options;
    options.output = output;
    arguments.insert(arguments.begin(), "xdotool");
    return kit::Process(arguments, options).wait(std::chrono::seconds(20)).value();
}

} // namespace

void open() {
    if (connection) {
        return;
    }
    int ends[2]{};
    kit::ProcessOptions options;
    options.inheritedFile = ::pipe2(ends, O_CLOEXEC) == 0 ? ends[1] : -1;
    options.output = "/dev/null";
    const std::vector<std::string> command{"Xvfb", "-displayfd", std::to_string(ends[1]),
                                           "-nolisten", "tcp"};
    server = std::make_unique<kit::Process>(command, options);
    ::close(ends[1]);
    std::string number = ":"; // a free one; the server tells it when it is ready
    for (char c = 0; ::read(ends[0], &c, 1) == 1 && c != '\n';) {
        number += c;
    }
    ::close(ends[0]);
    ::setenv("DISPLAY", number.c_str(), 1);
    connection = XOpenDisplay(nullptr);
    if (!connection) {
        throw std::runtime_error("Xvfb doesn't answer");
    }
    XSetErrorHandler([](_XDisplay*, XErrorEvent*) { return 0; }); // a window may go at any time
    // Wine waits two seconds for the manager's word on each window that goes. Screens in
    // memory have this font alone.
    manager = std::make_unique<kit::Process>(std::vector<std::string>{"evilwm", "-fn", "fixed"});
    // whose desktop may still be that of an earlier test's server, which is gone
    if (!programRunner().empty()) {
        kit::Process({programRunner()[0], "--stop"}).wait(std::chrono::seconds(60));
    }
}

bool findWindow() {
    const TemporaryFolder folder;
    if (xdotool({"search", "--onlyvisible", "--name", "^Cold Anchor Launcher$"}, folder / "id") !=
        0) {
        return false;
    }
    window = std::stoul(readFile(folder / "id"));
    return true;
}

bool waitForWindow() { // before its first frame SDL may replace it by one that suits the renderer
    return eventually([] { return findWindow() && picture()[700] == 0x070B0E; });
}

Picture picture() {
    Picture picture(1040 * 640);
    XImage* image = XGetImage(connection, window, 0, 0, 1040, 640, AllPlanes, ZPixmap);
    if (!image) {
        return picture;
    }
    // 0xRRGGBB at this depth, without gaps
    std::memcpy(picture.data(), image->data, 4 * picture.size());
    XDestroyImage(image);
    return picture;
}

void click(int x, int y, int button) {
    xdotool({"mousemove", "--window", std::to_string(window), std::to_string(x), std::to_string(y),
             "click", std::to_string(button)});
}

void press(const std::string& key) {
    xdotool({"windowfocus", std::to_string(window), "key", key});
}

void requestClose() {
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = XInternAtom(connection, "WM_PROTOCOLS", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = static_cast<long>(XInternAtom(connection, "WM_DELETE_WINDOW", False));
    XSendEvent(connection, window, False, NoEventMask, &event);
    XFlush(connection);
}

} // namespace ca::test::display
