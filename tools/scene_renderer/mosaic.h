// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tristop::scene {

/// Levels of the made-up camera: no light, and as much as it can tell from more.
constexpr std::uint16_t kBlackLevel = 512;
constexpr std::uint16_t kWhiteLevel = 16383;
/// What its red, green and blue pixels read of a grey that gives 1 in linear sRGB: the white balance undoes
/// it. Above 1 green saturates first.
constexpr std::array<double, 3> kCameraNeutral = {0.5, 1, 0.625};
/// How much of linear sRGB's red, green and blue its red, green and blue filters let through.
constexpr std::array<std::array<double, 3>, 3> kCameraFilters = {
    {{0.85, 0.15, 0}, {0.1, 0.8, 0.1}, {0, 0.2, 0.8}}};

/// The readings of a sensor behind a Bayer filter (red and green in even rows, green and blue in odd ones),
/// or of one that tells all three channels of each pixel, from kBlackLevel to kWhiteLevel, rows from the top
/// without padding.
struct Mosaic {
    int width = 0, height = 0;
    std::vector<std::uint16_t> levels;
    int samples = 1; ///< of a pixel: 1, or 3 without a filter

    /// The channel (0 red, 1 green, 2 blue) that pixel (x, y) sees.
    static constexpr std::size_t channelAt(int x, int y) { return static_cast<std::size_t>(x % 2 + y % 2); }

    /// Sets the reading of pixel (x, y), which received `color` in linear sRGB (1 saturates green).
    void expose(int x, int y, std::array<float, 3> color) {
        const auto pixel =
            static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
        if (samples == 1)
            levels[pixel] = reading(channelAt(x, y), color);
        else
            for (std::size_t channel = 0; channel < 3; ++channel)
                levels[3 * pixel + channel] = reading(channel, color);
    }

private:
    static std::uint16_t reading(std::size_t channel, std::array<float, 3> color) {
        double light = 0;
        for (std::size_t i = 0; i < color.size(); ++i)
            light += kCameraFilters[channel][i] * color[i];
        const double share = std::clamp(light * kCameraNeutral[channel], 0.0, 1.0);
        return static_cast<std::uint16_t>(kBlackLevel + share * (kWhiteLevel - kBlackLevel) + 0.5);
    }
};

} // namespace tristop::scene
