// The launcher's screen in memory: draw on it with SDL, then see what is on it.
#pragma once

#include <SDL3/SDL.h>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

namespace ca::test {

using Colour = std::uint32_t;        // 0xRRGGBB
using Picture = std::vector<Colour>; // 1040 by 640 pixels, row by row

struct Canvas {
    Canvas() = default;
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;
    ~Canvas() {
        SDL_DestroyRenderer(renderer);
        SDL_DestroySurface(surface);
    }

    Picture picture() const { // without gaps between the rows
        const auto* pixels = static_cast<const Colour*>(surface->pixels);
        return {pixels, pixels + 1040 * 640};
    }

    Colour at(int x, int y) const { return static_cast<const Colour*>(surface->pixels)[y * 1040 + x]; }

    bool isFilled(int x, int y, int width, int height, Colour colour) const {
        for (int row = y; row < y + height; ++row)
            for (int column = x; column < x + width; ++column)
                if (at(column, row) != colour)
                    return false;
        return true;
    }

    // Whether exactly this text stands at x, y, drawn in the debug font at this scale, with nothing but background
    // behind it up to `right`; 0 stands for the end of the panel that x lies in.
    bool hasText(float x, float y, const std::string& text, float scale, Colour colour, Colour background,
                 int right = 0) const {
        const Canvas expected;
        SDL_FillSurfaceRect(expected.surface, nullptr, background);
        SDL_SetRenderDrawColor(expected.renderer, colour >> 16 & 255, colour >> 8 & 255, colour & 255, 255);
        SDL_SetRenderScale(expected.renderer, scale, scale);
        SDL_RenderDebugText(expected.renderer, x / scale, y / scale, text.c_str());
        SDL_RenderPresent(expected.renderer);
        if (right == 0)
            right = x < 688 ? 628 : 1040; // the inner card's text area, or the window's edge
        for (int row = static_cast<int>(y); row <= static_cast<int>(std::ceil(y + 8 * scale)); ++row)
            for (int column = static_cast<int>(x) - 2; column < right; ++column)
                if (at(column, row) != expected.at(column, row))
                    return false;
        return true;
    }

    SDL_Surface* const surface = SDL_CreateSurface(1040, 640, SDL_PIXELFORMAT_XRGB8888);
    SDL_Renderer* const renderer = SDL_CreateSoftwareRenderer(surface);
};

} // namespace ca::test
