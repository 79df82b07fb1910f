// What is on the launcher's screen, read from pixels.
#pragma once

#include <SDL3/SDL.h>
#include <cstdint>
#include <string>
#include <vector>

namespace ca::test {

inline constexpr int screenWidth = 1040;
inline constexpr int screenHeight = 640;

using Colour = std::uint32_t; // 0xRRGGBB

// The window's pixels row by row, as 0xRRGGBB.
struct ScreenPixels {
    std::vector<Colour> pixels = std::vector<Colour>(screenWidth * screenHeight);

    Colour at(int x, int y) const { return pixels.at(static_cast<std::size_t>(y * screenWidth + x)); }

    // Whether all of the rectangle has this colour.
    bool isFilled(int x, int y, int width, int height, Colour colour) const;

    // Whether exactly this text stands at x, y, drawn in the debug font at this scale, with nothing but background
    // behind it up to `right`; 0 stands for the end of the panel that x lies in.
    bool hasText(float x, float y, const std::string& text, float scale, Colour colour, Colour background,
                 int right = 0) const;
};

// The pixels of a surface of the screen's size.
ScreenPixels readPixels(SDL_Surface* surface);

} // namespace ca::test
