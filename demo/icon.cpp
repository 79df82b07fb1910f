#include "icon.h"

#include <SDL3/SDL_surface.h>
#include <SDL3_image/SDL_image.h>
#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <numbers>
#include <stdexcept>

namespace ca::demo {
namespace {

// Everything is told in a square from 0 to 1 with y downwards, as distances to a shape's edge, negative inside.
struct Point {
    float x, y;
};

float length(Point p) {
    return std::hypot(p.x, p.y);
}

float toSegment(Point p, Point a, Point b, float halfWidth) {
    const Point along{b.x - a.x, b.y - a.y};
    const Point from{p.x - a.x, p.y - a.y};
    const float square = along.x * along.x + along.y * along.y;
    const float t = std::clamp((from.x * along.x + from.y * along.y) / square, 0.0F, 1.0F);
    return length({from.x - t * along.x, from.y - t * along.y}) - halfWidth;
}

float toRing(Point p, Point centre, float radius, float halfWidth) {
    return std::abs(length({p.x - centre.x, p.y - centre.y}) - radius) - halfWidth;
}

// The lower arc with its two flukes.
float toArms(Point p) {
    constexpr Point centre{0.5F, 0.53F};
    constexpr float radius = 0.27F;
    constexpr float reach = 0.42F * std::numbers::pi_v<float>;
    const Point mirrored{std::abs(p.x - centre.x), p.y - centre.y};
    const float angle = std::min(std::atan2(mirrored.x, mirrored.y), reach);
    const Point end{radius * std::sin(reach), radius * std::cos(reach)};
    const Point nearest{radius * std::sin(angle), radius * std::cos(angle)};
    const float arc = length({mirrored.x - nearest.x, mirrored.y - nearest.y}) - 0.04F;
    const float outer = toSegment(mirrored, end, {end.x + 0.055F, end.y + 0.12F}, 0.026F);
    const float inner = toSegment(mirrored, end, {end.x - 0.105F, end.y + 0.06F}, 0.026F);
    return std::min({arc, outer, inner});
}

float toAnchor(Point p) {
    const float shaft = toSegment(p, {0.5F, 0.3F}, {0.5F, 0.8F}, 0.04F);
    const float stock = toSegment(p, {0.35F, 0.39F}, {0.65F, 0.39F}, 0.034F);
    return std::min({shaft, stock, toRing(p, {0.5F, 0.22F}, 0.075F, 0.03F), toArms(p)});
}

float toRoundSquare(Point p) {
    constexpr float corner = 0.2F;
    const Point q{std::abs(p.x - 0.5F) - 0.48F + corner, std::abs(p.y - 0.5F) - 0.48F + corner};
    return length({std::max(q.x, 0.0F), std::max(q.y, 0.0F)}) + std::min(std::max(q.x, q.y), 0.0F) - corner;
}

} // namespace

void writeIcon(const std::filesystem::path& path, int size) {
    const std::unique_ptr<SDL_Surface, decltype(&SDL_DestroySurface)> surface(
        SDL_CreateSurface(size, size, SDL_PIXELFORMAT_RGBA32), SDL_DestroySurface);
    if (surface == nullptr)
        throw std::runtime_error("no surface for the icon");
    const float scale = static_cast<float>(size);
    const auto cover = [scale](float distance) { return std::clamp(0.5F - distance * scale, 0.0F, 1.0F); };
    constexpr std::array<float, 3> ground{17, 26, 31};
    constexpr std::array<float, 3> anchor{225, 61, 48};
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x) {
            const Point p{(static_cast<float>(x) + 0.5F) / scale, (static_cast<float>(y) + 0.5F) / scale};
            const float mix = cover(toAnchor(p));
            std::array<Uint8, 4> pixel{};
            for (std::size_t i = 0; i < 3; ++i)
                pixel[i] = static_cast<Uint8>(std::lround(ground[i] + (anchor[i] - ground[i]) * mix));
            pixel[3] = static_cast<Uint8>(std::lround(255 * cover(toRoundSquare(p))));
            SDL_WriteSurfacePixel(surface.get(), x, y, pixel[0], pixel[1], pixel[2], pixel[3]);
        }
    if (!IMG_SavePNG(surface.get(), path.c_str()))
        throw std::runtime_error("can't write " + path.string());
}

} // namespace ca::demo
