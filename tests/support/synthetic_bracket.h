// SPDX-License-Identifier: MIT
// Three exposures of a textured scene as engine inputs, made without any file.
#pragma once

#include "engine/hdr_engine.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

namespace hdr::test {

/// Smooth noise in 0..1 with features of about one unit, the same for the same seed everywhere.
inline double valueNoise(double x, double y, uint32_t seed) {
    const auto corner = [seed](int64_t i, int64_t j) {
        uint64_t h = static_cast<uint64_t>(i) * 0x9E3779B97F4A7C15u ^
                     static_cast<uint64_t>(j) * 0xC2B2AE3D27D4EB4Fu ^ seed * 0x165667B19E3779F9u;
        h = (h ^ (h >> 29)) * 0xBF58476D1CE4E5B9u;
        return static_cast<double>((h ^ (h >> 32)) & 0xFFFF) / 65535.0;
    };
    const double fx = x - std::floor(x);
    const double fy = y - std::floor(y);
    const auto i = static_cast<int64_t>(std::floor(x));
    const auto j = static_cast<int64_t>(std::floor(y));
    const auto ease = [](double t) { return t * t * (3 - 2 * t); };
    const double top = corner(i, j) + (corner(i + 1, j) - corner(i, j)) * ease(fx);
    const double bottom = corner(i, j + 1) + (corner(i + 1, j + 1) - corner(i, j + 1)) * ease(fx);
    return top + (bottom - top) * ease(fy);
}

struct BracketSettings {
    int width = 320;
    int height = 240;
    std::array<double, 3> stops = {-2, 0, 2};
    /// Displacement of each exposure: the scene point at reference pixel p is seen at p - displacement.
    std::array<std::array<double, 2>, 3> displacement{};
    /// Degrees by which each camera was turned about the picture's centre (in addition to the displacement).
    std::array<double, 3> rotation{};
    double noise = 0;        ///< standard deviation of the luminance, in levels
    double movingSquare = 0; ///< side of a square that stands elsewhere in each exposure, in pixels
    uint32_t seed = 1;
};

/// Owns the pixels of three 0x501 pictures whose rows end exactly with the last pixel pair.
struct Bracket {
    std::array<std::vector<uint8_t>, 3> bytes;
    std::array<Offscreen, 3> pictures;

    explicit Bracket(const BracketSettings &settings) {
        for (size_t k = 0; k < 3; k++) {
            const int pitch = 2 * settings.width;
            bytes[k].resize(static_cast<size_t>(pitch) * static_cast<size_t>(settings.height));
            pictures[k] = {HDR_FORMAT_YUY2, settings.width, settings.height, {bytes[k].data()}, {pitch}};
            for (int y = 0; y < settings.height; y++)
                for (int x = 0; x < settings.width; x++)
                    paint(settings, k, x, y);
        }
    }
    Bracket(const Bracket &) = delete;
    Bracket &operator=(const Bracket &) = delete;

private:
    /// The mean of four uniform numbers is nearly normal; its deviation is 0.144.
    static double noiseAt(const BracketSettings &settings, size_t k, int x, int y) {
        if (settings.noise == 0)
            return 0;
        double sum = 0;
        for (uint32_t i = 0; i < 4; i++)
            sum += valueNoise(x, y, settings.seed + 100 + 4 * static_cast<uint32_t>(k) + i) - 0.5;
        return settings.noise * sum / 4 / 0.144;
    }

    void paint(const BracketSettings &settings, size_t k, int x, int y) {
        const double centreX = (settings.width - 1) / 2.0, centreY = (settings.height - 1) / 2.0;
        const double turn = settings.rotation[k] * std::numbers::pi / 180;
        const double sx = centreX + std::cos(turn) * (x - centreX) - std::sin(turn) * (y - centreY) +
                          settings.displacement[k][0];
        const double sy = centreY + std::sin(turn) * (x - centreX) + std::cos(turn) * (y - centreY) +
                          settings.displacement[k][1];
        const double squareX = settings.width * (0.3 + 0.2 * static_cast<double>(k));
        const double squareY = settings.height * 0.4;
        double light = std::exp2(-5 + 6 * (0.5 * valueNoise(sx / 61, sy / 61, settings.seed) +
                                           0.3 * valueNoise(sx / 13, sy / 13, settings.seed + 1) +
                                           0.2 * valueNoise(sx / 5, sy / 5, settings.seed + 2)));
        if (sx >= squareX && sx < squareX + settings.movingSquare && sy >= squareY &&
            sy < squareY + settings.movingSquare)
            light = valueNoise(sx / 3, sy / 3, settings.seed + 7) > 0.5 ? 0.5 : 0.1;
        const double level = std::pow(std::min(1.0, light * std::exp2(settings.stops[k])), 1 / 2.2);
        const double tint = valueNoise(sx / 40, sy / 40, settings.seed + 3) - 0.5;
        uint8_t *pixel = bytes[k].data() + y * 2 * settings.width + 2 * x;
        pixel[0] =
            static_cast<uint8_t>(std::clamp(16.5 + 219 * level + noiseAt(settings, k, x, y), 16.0, 235.0));
        pixel[1] = static_cast<uint8_t>(128.5 + (x & 1 ? -60 : 60) * tint * level);
    }
};

} // namespace hdr::test
