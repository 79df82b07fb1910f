// The game that the demo's launcher starts: a window with the game's name. Escape, closing the
// window or 20 seconds end it.
#include <SDL3/SDL.h>
#include <SDL3/SDL_main.h>
#include <cmath>

namespace {

constexpr int width = 960;
constexpr int height = 540;

void drawCentred(SDL_Renderer* renderer, const char* text, float y, float scale) {
    const float textWidth =
        static_cast<float>(SDL_strlen(text)) * SDL_DEBUG_TEXT_FONT_CHARACTER_SIZE * scale;
    SDL_SetRenderScale(renderer, scale, scale);
    SDL_RenderDebugText(renderer, (static_cast<float>(width) - textWidth) / 2 / scale, y / scale,
                        text);
    SDL_SetRenderScale(renderer, 1, 1);
}

void draw(SDL_Renderer* renderer, float seconds) {
    SDL_SetRenderDrawColor(renderer, 10, 34, 48, 255);
    SDL_RenderClear(renderer);
    for (int wave = 0; wave < 5; ++wave) {
        const auto shade = static_cast<Uint8>(70 + 22 * wave);
        SDL_SetRenderDrawColor(renderer, 20, shade, static_cast<Uint8>(shade + 20), 255);
        for (int x = 0; x < width; x += 8) {
            const float phase =
                static_cast<float>(x) / 90.0F + seconds * (1.0F + 0.2F * static_cast<float>(wave));
            const SDL_FRect crest{static_cast<float>(x),
                                  static_cast<float>(340 + 40 * wave) +
                                      14 * std::sin(phase + static_cast<float>(wave)),
                                  8, 6};
            SDL_RenderFillRect(renderer, &crest);
        }
    }
    SDL_SetRenderDrawColor(renderer, 236, 240, 232, 255);
    drawCentred(renderer, "COLD ANCHOR", 150, 9);
    SDL_SetRenderDrawColor(renderer, 150, 180, 178, 255);
    drawCentred(renderer, "THE DEMO GAME // ESCAPE ENDS IT", 260, 2);
    SDL_RenderPresent(renderer);
}

bool endsGame(const SDL_Event& event) {
    return event.type == SDL_EVENT_QUIT ||
           (event.type == SDL_EVENT_KEY_DOWN && event.key.scancode == SDL_SCANCODE_ESCAPE);
}

} // namespace

int main(int, char**) {
    SDL_Window* window = nullptr;
    SDL_Renderer* renderer = nullptr;
    if (!SDL_Init(SDL_INIT_VIDEO) ||
        !SDL_CreateWindowAndRenderer("Cold Anchor", width, height, 0, &window, &renderer)) {
        return 1;
    }
    SDL_SetRenderVSync(renderer, 1);
    const Uint64 start = SDL_GetTicks();
    for (bool running = true; running;) {
        // Waiting for events paces the loop where the display doesn't.
        SDL_Event event;
        for (bool more = SDL_WaitEventTimeout(&event, 15); more; more = SDL_PollEvent(&event)) {
            running = running && !endsGame(event);
        }
        const Uint64 elapsed = SDL_GetTicks() - start;
        running = running && elapsed < 20'000;
        draw(renderer, static_cast<float>(elapsed) / 1000.0F);
    }
    SDL_DestroyRenderer(renderer);
    SDL_DestroyWindow(window);
    SDL_Quit();
    return 0;
}
