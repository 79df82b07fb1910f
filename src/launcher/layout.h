// The window and the three areas that take a click. Coordinates of the drawing,
// whatever the window's size is; origin at the top left.
#pragma once

#include <SDL3/SDL.h>

namespace ca::launcher {

inline constexpr int windowWidth = 1040;
inline constexpr int windowHeight = 640;

inline constexpr SDL_FRect repairButton{720, 452, 126, 42};
inline constexpr SDL_FRect refreshButton{854, 452, 126, 42};
inline constexpr SDL_FRect mainButton{720, 515, 260, 62};

// All four edges belong to an area.
constexpr bool contains(const SDL_FRect& area, float x, float y) {
    return x >= area.x && x <= area.x + area.w && y >= area.y && y <= area.y + area.h;
}

} // namespace ca::launcher
