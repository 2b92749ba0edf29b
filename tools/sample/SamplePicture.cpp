#include "SamplePicture.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace tarvex_sample {

namespace {

// Grain from a hash of the position, so that any pixel can be drawn alone.
double grain(std::uint32_t x, std::uint32_t y) {
    std::uint32_t h = x * 0x9E3779B1u ^ (y + 0x7F4A7C15u) * 0x85EBCA77u;
    h ^= h >> 15;
    h *= 0x2C1B3C6Du;
    h ^= h >> 12;
    return static_cast<double>(h & 0xFF) / 255.0 - 0.5;
}

struct Rgb {
    double r, g, b;
};

Rgb mix(Rgb a, Rgb b, double t) {
    return {a.r + (b.r - a.r) * t, a.g + (b.g - a.g) * t, a.b + (b.b - a.b) * t};
}

// Sky to ground, with a sun and two shaded balls, on a 0..1 square.
Rgb scene(double u, double v) {
    const Rgb sky = mix({40, 90, 200}, {250, 190, 150}, v / 0.6);
    const Rgb ground = mix({70, 120, 40}, {30, 60, 20}, (v - 0.6) / 0.4);
    Rgb c = v < 0.6 ? sky : ground;
    const double sun = std::hypot(u - 0.75, v - 0.25);
    if (sun < 0.08) c = mix({255, 250, 210}, c, sun / 0.08 * sun / 0.08);
    const struct {
        double x, y, radius;
        Rgb colour;
    } balls[] = {{0.3, 0.65, 0.16, {200, 40, 50}}, {0.58, 0.78, 0.1, {240, 200, 40}}};
    for (const auto &ball : balls) {
        const double dx = (u - ball.x) / ball.radius, dy = (v - ball.y) / ball.radius;
        if (dx * dx + dy * dy >= 1) continue;
        const double light = std::clamp(
            0.35 + 0.65 * (-dx * 0.5 - dy * 0.6 + std::sqrt(1 - dx * dx - dy * dy) * 0.62), 0.0,
            1.0);
        c = mix({0, 0, 0}, ball.colour, light);
    }
    if (u > 0.05 && u < 0.2 && v > 0.1 && v < 0.5)
        c = mix({20, 20, 60}, {160, 200, 230}, (u - 0.05) / 0.15);
    return c;
}

std::uint8_t toSample(double value) {
    return static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0, 255.0)));
}

}  // namespace

// Interleaved RGB, rows top to bottom.
std::vector<std::uint8_t> samplePicture(std::uint32_t width, std::uint32_t height) {
    std::vector<std::uint8_t> samples;
    samples.reserve(std::size_t{width} * height * 3);
    for (std::uint32_t y = 0; y < height; ++y)
        for (std::uint32_t x = 0; x < width; ++x) {
            const Rgb c = scene((x + 0.5) / width, (y + 0.5) / height);
            const double noise = grain(x, y) * 16;
            for (double channel : {c.r, c.g, c.b})
                samples.push_back(toSample(channel + noise));
        }
    return samples;
}

}  // namespace tarvex_sample
