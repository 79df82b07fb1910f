// A screen in memory of this process's own: the launcher's window on it, a mouse and a keyboard. One thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ca::test {

using Picture = std::vector<std::uint32_t>; // 1040 by 640 pixels as 0xRRGGBB, row by row

namespace display {

const std::string& name(); // for the environment; the first call of any starts the screen
bool findWindow();         // the launcher's, which the calls below mean; false while there is none
Picture picture();         // black when the window is gone
void click(int x, int y, int button = 1);
void press(const std::string& key);
void requestClose(); // what a window manager sends when the player closes the window

} // namespace display

} // namespace ca::test
