// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>

namespace tristop::scene {

/// A well mixed 64-bit value from a 64-bit one (the finaliser of SplitMix64, Steele et al. 2014).
constexpr std::uint64_t mixBits(std::uint64_t x) {
    x += 0x9e3779b97f4a7c15u;
    x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9u;
    x = (x ^ (x >> 27)) * 0x94d049bb133111ebu;
    return x ^ (x >> 31);
}

/// Deterministic textures of one seed, continuous in their arguments.
class Noise {
public:
    explicit Noise(std::uint64_t seed);

    /// Gradient noise (Perlin 2002) with features about one unit wide, from about -1 to 1, mean 0.
    float gradient(float x, float y) const;

    /// Sum of `octaves` octaves of gradient noise, each of half the size and strength of the one before.
    /// Octaves finer than the pixel grid fade out; `footprint` is the width of a pixel in units of x and y.
    float fractal(float x, float y, int octaves, float footprint) const;

    /// Like fractal, with each octave folded at zero: rounded heaps with sharp creases between them.
    float billows(float x, float y, int octaves, float footprint) const;

    /// A random number in [0, 1) for the grid cell (column, row).
    float cell(int column, int row) const;

private:
    template <typename Octave>
    float sumOctaves(float x, float y, int octaves, float footprint, const Octave &octaveAt) const;

    int hash(int x, int y) const {
        return permutation[static_cast<unsigned>(permutation[static_cast<unsigned>(x) & 255] + y) & 255];
    }

    std::array<std::uint8_t, 256> permutation;
    std::array<float, 256> gradientX, gradientY;
    std::uint64_t seed;
};

} // namespace tristop::scene
