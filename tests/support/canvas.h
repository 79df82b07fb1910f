// The launcher's screen in memory: draw on it, then see what is on it.
#pragma once

#include "launcher/frame_canvas.h"

#include <SDL3/SDL.h>
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
        SDL_FlushRenderer(renderer);
        const auto* pixels = static_cast<const Colour*>(surface->pixels);
        return {pixels, pixels + 1040 * 640};
    }

    // In the debug font at this scale, on black.
    void write(float x, float y, const std::string& text, float scale, Colour colour) const {
        launcher::FrameCanvas canvas(renderer);
        SDL_SetRenderDrawColor(renderer, 0, 0, 0, 255);
        SDL_RenderClear(renderer);
        SDL_SetRenderDrawColor(renderer, colour >> 16 & 255, colour >> 8 & 255, colour & 255, 255);
        SDL_SetRenderScale(renderer, scale, scale);
        SDL_RenderDebugText(renderer, x / scale, y / scale, text.c_str());
        SDL_SetRenderScale(renderer, 1, 1);
        canvas.present();
    }

    SDL_Surface* const surface = SDL_CreateSurface(1040, 640, SDL_PIXELFORMAT_XRGB8888);
    SDL_Renderer* const renderer = SDL_CreateSoftwareRenderer(surface);
};

} // namespace ca::test
