// The one screen, drawn from scratch on every frame out of filled rectangles and SDL's debug font.
#pragma once

#include "job/shared.h"

#include <SDL3/SDL.h>
#include <filesystem>
#include <string>
#include <string_view>

namespace ca::launcher {

// This program's version, shown in the footer. Each executable brings its own definition; the
// launcher's is the project's.
extern const std::string_view launcherVersion;

// Draws and presents a frame. What it shows depends on the arguments and on the version marker,
// which is read anew; nothing is kept between frames, and a drawing call that fails is ignored.
// Main thread; blocks for the display's refresh.
void drawScreen(SDL_Renderer* renderer, const std::filesystem::path& installDir,
                const job::SharedSnapshot& snapshot, const std::string& localPatchNotes);

// Draws `text` with its top left corner at window pixels x, y whatever the scale; a character takes
// 8 times `scale` pixels. What lies behind the window's right edge costs nothing.
void drawText(SDL_Renderer* renderer, float x, float y, std::string_view text, float scale,
              Uint8 red, Uint8 green, Uint8 blue);

} // namespace ca::launcher
