// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/scene_renderer/noise.h"

#include <cmath>
#include <numbers>
#include <utility>

#include "tools/scene_renderer/vector.h"

namespace tristop::scene {

namespace {

float quintic(float t) {
    return t * t * t * (t * (t * 6 - 15) + 10);
}

} // namespace

Noise::Noise(std::uint64_t seed) : seed(seed) {
    for (unsigned i = 0; i < 256; ++i) {
        permutation[i] = static_cast<std::uint8_t>(i);
        const double angle = 2 * std::numbers::pi * i / 256;
        gradientX[i] = static_cast<float>(std::cos(angle));
        gradientY[i] = static_cast<float>(std::sin(angle));
    }
    for (unsigned i = 255; i > 0; --i)
        std::swap(permutation[i], permutation[mixBits(seed + i) % (i + 1)]);
}

float Noise::gradient(float x, float y) const {
    const int column = floorToInt(x), row = floorToInt(y);
    const float fx = x - static_cast<float>(column), fy = y - static_cast<float>(row);
    const auto corner = [&](int dx, int dy) {
        const auto h = static_cast<unsigned>(hash(column + dx, row + dy));
        return gradientX[h] * (fx - static_cast<float>(dx)) + gradientY[h] * (fy - static_cast<float>(dy));
    };
    const float wx = quintic(fx), wy = quintic(fy);
    // A lattice of unit gradients stays within sqrt(1/2); the factor brings it near -1 to 1.
    return 1.4f * mix(mix(corner(0, 0), corner(1, 0), wx), mix(corner(0, 1), corner(1, 1), wx), wy);
}

template <typename Octave>
float Noise::sumOctaves(float x, float y, int octaves, float footprint, const Octave &octaveAt) const {
    float sum = 0, amplitude = 0.5f;
    for (int octave = 0; octave < octaves; ++octave) {
        const float visible = saturate((0.7f - footprint) * 2.5f);
        if (visible == 0)
            break;
        sum += amplitude * visible * octaveAt(x, y);
        amplitude *= 0.5f;
        footprint *= 2;
        // Turn each octave a little, so that the lattices never line up.
        const float turnedX = 1.83f * x + 0.81f * y + 17.3f;
        y = 1.83f * y - 0.81f * x + 5.7f;
        x = turnedX;
    }
    return sum;
}

float Noise::fractal(float x, float y, int octaves, float footprint) const {
    return sumOctaves(x, y, octaves, footprint, [this](float u, float v) { return gradient(u, v); });
}

float Noise::billows(float x, float y, int octaves, float footprint) const {
    return sumOctaves(x, y, octaves, footprint,
                      [this](float u, float v) { return 2.4f * std::abs(gradient(u, v)) - 0.8f; });
}

float Noise::cell(int column, int row) const {
    const std::uint64_t key =
        (std::uint64_t{static_cast<std::uint32_t>(column)} << 32) | static_cast<std::uint32_t>(row);
    return static_cast<float>(mixBits(mixBits(key) ^ seed) >> 40) * 0x1p-24f;
}

} // namespace tristop::scene
