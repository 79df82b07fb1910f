#include "launcher/window.h"

#include "launcher/layout.h"
#include "system/path.h"

#include <SDL3_image/SDL_image.h>
#include <algorithm>

namespace ca::launcher {

namespace {

// The room for a window's content on its display.
bool findRoom(SDL_Window* window, SDL_Rect& room) {
    if (!SDL_GetDisplayUsableBounds(SDL_GetDisplayForWindow(window), &room)) {
        return false;
    }
    int top = 0;
    int left = 0;
    int bottom = 0;
    int right = 0;
    SDL_GetWindowBordersSize(window, &top, &left, &bottom, &right); // zeros where unknown
    room.w -= left + right;
    room.h -= top + bottom;
    return true;
}

// A window's size is in pixels, so where a display shows everything larger the window has to grow,
// as far as the display has room for it. True when its size has changed.
bool fitToDisplay(SDL_Window* window) {
    SDL_Rect room{};
    if (!findRoom(window, room)) {
        return false;
    }
    const float widest = static_cast<float>(room.w) / windowWidth;
    const float highest = static_cast<float>(room.h) / windowHeight;
    const float wanted = std::min({SDL_GetWindowDisplayScale(window), widest, highest});
    const float scale = std::max(wanted, 1.0F);
    const int width = static_cast<int>(windowWidth * scale);
    const int height = static_cast<int>(windowHeight * scale);
    int currentWidth = 0;
    int currentHeight = 0;
    SDL_GetWindowSize(window, &currentWidth, &currentHeight);
    if (width == currentWidth && height == currentHeight) {
        return false;
    }
    return SDL_SetWindowSize(window, width, height);
}

// The window has come to another display, or the player has changed this one's scale.
bool followDisplay(void* window, SDL_Event* event) {
    if (event->type == SDL_EVENT_WINDOW_DISPLAY_SCALE_CHANGED) {
        fitToDisplay(static_cast<SDL_Window*>(window));
    }
    return true; // SDL ignores it
}

} // namespace

ExitStatus openWindow(SDL_Window*& window, SDL_Renderer*& renderer) {
    if (!SDL_Init(SDL_INIT_VIDEO)) {
        return exitNoVideo;
    }
    window = SDL_CreateWindow("Cold Anchor Launcher", windowWidth, windowHeight, 0);
    if (!window) {
        SDL_Quit();
        return exitNoWindow;
    }
    renderer = SDL_CreateRenderer(window, nullptr);
    if (!renderer) {
        SDL_DestroyWindow(window);
        SDL_Quit();
        return exitNoRenderer;
    }
    SDL_SetRenderVSync(renderer, 1); // a driver that refuses draws unpaced
    // The drawing's coordinates hold whatever the window's size is, for clicks too.
    SDL_SetRenderLogicalPresentation(renderer, windowWidth, windowHeight,
                                     SDL_LOGICAL_PRESENTATION_LETTERBOX);
    if (fitToDisplay(window)) {
        // It has grown from its top left corner.
        SDL_SetWindowPosition(window, SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED);
    }
    SDL_AddEventWatch(followDisplay, window);
    return exitSuccess;
}

void setWindowIcon(SDL_Window* window, const std::filesystem::path& image) {
    SDL_Surface* const icon = IMG_Load(system::utf8FromPath(image).c_str());
    if (icon == nullptr) {
        return; // the launcher is as good without
    }
    SDL_SetWindowIcon(window, icon); // keeps a copy
    SDL_DestroySurface(icon);
}

void closeWindow(SDL_Window* window, SDL_Renderer* renderer) {
    SDL_RemoveEventWatch(followDisplay, window);
    SDL_DestroyRenderer(renderer);
    SDL_DestroyWindow(window);
    SDL_Quit();
}

} // namespace ca::launcher
