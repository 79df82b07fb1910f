#include "launcher/frame_canvas.h"

#include "launcher/layout.h"

#include <algorithm>

namespace ca::launcher {

namespace {

// Under this name the renderer keeps the texture between frames.
constexpr const char* textureProperty = "coldanchor.frame_canvas";

constexpr int leastFactor = 2; // at four times hardly a letter reads better

// How many of the texture's pixels are one of the drawing's on each side.
int factorFor(SDL_Renderer* renderer) {
    int width = 0;
    int height = 0;
    if (!SDL_GetRenderOutputSize(renderer, &width, &height)) {
        return leastFactor;
    }
    const int across = (width + windowWidth - 1) / windowWidth;
    const int down = (height + windowHeight - 1) / windowHeight;
    return std::max({leastFactor, across, down});
}

SDL_Texture* makeTexture(SDL_Renderer* renderer, int factor) {
    SDL_Texture* const texture =
        SDL_CreateTexture(renderer, SDL_PIXELFORMAT_XRGB8888, SDL_TEXTUREACCESS_TARGET,
                          factor * windowWidth, factor * windowHeight);
    if (texture != nullptr) {
        SDL_SetTextureBlendMode(texture, SDL_BLENDMODE_NONE);
        SDL_SetTextureScaleMode(texture, SDL_SCALEMODE_LINEAR);
    }
    return texture;
}

// The texture of the frame before, unless the display has changed; null where none can be had.
SDL_Texture* textureFor(SDL_Renderer* renderer) {
    const int factor = factorFor(renderer);
    const SDL_PropertiesID properties = SDL_GetRendererProperties(renderer);
    auto* texture =
        static_cast<SDL_Texture*>(SDL_GetPointerProperty(properties, textureProperty, nullptr));
    if (texture != nullptr && texture->w == factor * windowWidth) {
        return texture;
    }
    SDL_DestroyTexture(texture); // a null one is fine
    texture = makeTexture(renderer, factor);
    SDL_SetPointerProperty(properties, textureProperty, texture);
    return texture;
}

} // namespace

FrameCanvas::FrameCanvas(SDL_Renderer* renderer)
    : renderer_(renderer), texture_(textureFor(renderer)) {
    if (texture_ != nullptr && SDL_SetRenderTarget(renderer_, texture_)) {
        // A property of the target: the texture takes the drawing's coordinates, too.
        SDL_SetRenderLogicalPresentation(renderer_, windowWidth, windowHeight,
                                         SDL_LOGICAL_PRESENTATION_STRETCH);
    } else {
        texture_ = nullptr;
    }
}

void FrameCanvas::present() {
    if (texture_ != nullptr) {
        SDL_SetRenderTarget(renderer_, nullptr);
        SDL_RenderTexture(renderer_, texture_, nullptr, nullptr);
    }
    SDL_RenderPresent(renderer_);
}

} // namespace ca::launcher
