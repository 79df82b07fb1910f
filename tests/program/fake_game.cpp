// Stands in for the game. Appends to "game.report" beside itself how it was started, and its end
// once "game.stop" lies there or ten seconds have passed.
#include <SDL3/SDL.h>
#include <SDL3/SDL_main.h>
#include <string>

int main(int argc, char* argv[]) {
    const std::string folder = SDL_GetBasePath();
    SDL_IOStream* report = SDL_IOFromFile((folder + "game.report").c_str(), "ab");
    std::string text;
    for (int i = 0; i < argc; ++i) {
        text += "argument " + std::string(argv[i]) + "\n";
    }
    text += "in " + std::string(SDL_GetCurrentDirectory()) + "\n";
    SDL_WriteIO(report, text.data(), text.size());
    SDL_FlushIO(report);
    while (SDL_GetTicks() < 10'000 && !SDL_GetPathInfo((folder + "game.stop").c_str(), nullptr)) {
        SDL_Delay(5);
    }
    SDL_WriteIO(report, "ended\n", 6);
    return SDL_CloseIO(report) ? 0 : 1;
}
