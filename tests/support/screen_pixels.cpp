#include "support/screen_pixels.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace ca::test {

namespace {

struct Release {
    void operator()(SDL_Surface* surface) const { SDL_DestroySurface(surface); }
    void operator()(SDL_Renderer* renderer) const { SDL_DestroyRenderer(renderer); }
};

Uint8 channel(Colour colour, int shift) {
    return static_cast<Uint8>(colour >> shift);
}

void setColour(SDL_Renderer* renderer, Colour colour) {
    SDL_SetRenderDrawColor(renderer, channel(colour, 16), channel(colour, 8), channel(colour, 0), 255);
}

} // namespace

bool ScreenPixels::isFilled(int x, int y, int width, int height, Colour colour) const {
    for (int row = y; row < y + height; ++row)
        for (int column = x; column < x + width; ++column)
            if (at(column, row) != colour)
                return false;
    return true;
}

bool ScreenPixels::hasText(float x, float y, const std::string& text, float scale, Colour colour, Colour background,
                           int right) const {
    const std::unique_ptr<SDL_Surface, Release> surface(
        SDL_CreateSurface(screenWidth, screenHeight, SDL_PIXELFORMAT_XRGB8888));
    const std::unique_ptr<SDL_Renderer, Release> renderer(SDL_CreateSoftwareRenderer(surface.get()));
    setColour(renderer.get(), background);
    SDL_RenderClear(renderer.get());
    setColour(renderer.get(), colour);
    SDL_SetRenderScale(renderer.get(), scale, scale);
    SDL_RenderDebugText(renderer.get(), x / scale, y / scale, text.c_str());
    SDL_RenderPresent(renderer.get());
    const ScreenPixels expected = readPixels(surface.get());

    if (right == 0)
        right = x < 688 ? 628 : screenWidth; // the inner card's text area, or the window's edge
    for (int row = static_cast<int>(y); row <= static_cast<int>(std::ceil(y + 8 * scale)); ++row)
        for (int column = static_cast<int>(x) - 2; column < right; ++column)
            if (at(column, row) != expected.at(column, row))
                return false;
    return true;
}

ScreenPixels readPixels(SDL_Surface* surface) {
    ScreenPixels screen;
    for (int y = 0; y < screenHeight; ++y)
        for (int x = 0; x < screenWidth; ++x) {
            Uint8 red = 0;
            Uint8 green = 0;
            Uint8 blue = 0;
            SDL_ReadSurfacePixel(surface, x, y, &red, &green, &blue, nullptr);
            screen.pixels[static_cast<std::size_t>(y * screenWidth + x)] =
                Colour{red} << 16 | Colour{green} << 8 | blue;
        }
    return screen;
}

} // namespace ca::test
