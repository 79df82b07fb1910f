// The one window: opened, given its icon, closed.
#pragma once

#include <SDL3/SDL.h>
#include <filesystem>

namespace ca::launcher {

// Exit statuses of the process. The frame loop's end is success, however it came about.
enum ExitStatus : int { exitSuccess = 0, exitNoVideo = 1, exitNoWindow = 2, exitNoRenderer = 3 };

// Opens the window and its renderer, 1040 by 640 pixels times the display's scale where that is
// above 1 and there is room for it; moved to another display, the window follows that one's scale.
// Paced by the display's refresh where the driver can. Anything but exitSuccess has undone what
// came before it. Main thread.
ExitStatus openWindow(SDL_Window*& window, SDL_Renderer*& renderer);

// Shows the image as the window's icon. One that is missing or can't be decoded is
// skipped without a word.
void setWindowIcon(SDL_Window* window, const std::filesystem::path& image);

void closeWindow(SDL_Window* window, SDL_Renderer* renderer);

} // namespace ca::launcher
