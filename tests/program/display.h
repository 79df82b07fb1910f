// A screen in memory of this process's own: the launcher's window on it, a mouse and
// a keyboard. One thread.
#pragma once

#include "support/canvas.h"

namespace ca::test::display {

// once, before all else; programs that are started from then on show their windows on it
void open();
bool findWindow();    // the launcher's, which the calls below mean; false while there is none
bool waitForWindow(); // and for its first frame
Picture picture();    // black when the window is gone
void click(int x, int y, int button = 1);
void press(const std::string& key);
void requestClose(); // what a window manager sends when the player closes the window

} // namespace ca::test::display
