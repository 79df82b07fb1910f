// What a frame is drawn on: more pixels than the display shows of it.
#pragma once

#include <SDL3/SDL.h>

namespace ca::launcher {

// The debug font is drawn without a filter, so at scales below 1 it loses rows of its glyphs, and
// small texts can't be read. A frame is therefore drawn into a texture with at least twice the
// drawing's pixels on each side, and not fewer than the display has, and what the display can't
// show is reduced with a filter. Where the renderer has no such texture, the frame is drawn
// straight to the display. Coordinates are the drawing's own, 1040 by 640, either way.
//
// The texture belongs to the renderer and serves frame after frame. Main thread.
class FrameCanvas {
public:
    // Until `present`, what is drawn with the renderer is drawn on the canvas.
    explicit FrameCanvas(SDL_Renderer* renderer);
    FrameCanvas(const FrameCanvas&) = delete;
    FrameCanvas& operator=(const FrameCanvas&) = delete;

    // Shows the frame; the last call. Blocks for the display's refresh.
    void present();

private:
    SDL_Renderer* renderer_;
    SDL_Texture* texture_;
};

} // namespace ca::launcher
