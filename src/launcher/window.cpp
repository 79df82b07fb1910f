#include "launcher/window.h"

#include "launcher/layout.h"
#include "system/path.h"

#include <SDL3_image/SDL_image.h>

namespace ca::launcher {

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
    SDL_DestroyRenderer(renderer);
    SDL_DestroyWindow(window);
    SDL_Quit();
}

} // namespace ca::launcher
