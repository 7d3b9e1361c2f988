// SPDX-License-Identifier: GPL-3.0-or-later
// What the controls of the side panel may be set to, and the numbers that they show.
#pragma once

#include <algorithm>
#include <cstdint>

namespace tristop {

/// The range of a slider and the value that a double click brings back.
struct SliderRange {
    int32_t lowest;
    int32_t highest;
    int32_t standard;

    constexpr int32_t clamped(int64_t value) const {
        return static_cast<int32_t>(std::clamp<int64_t>(value, lowest, highest));
    }
};

constexpr SliderRange kToneLengthRange{0, 100, 45};
constexpr SliderRange kToneSaturationRange{0, 100, 40};
constexpr SliderRange kBrightnessRange{-100, 100, 10};
/// From the level at which ghost suppression starts, so that slider and engine agree from the beginning.
constexpr SliderRange kGhostRange{6, 10, 6};
constexpr SliderRange kSaturationRange{-100, 100, 0};
constexpr SliderRange kContrastRange{-100, 100, 0};

/// The number beside a slider lies this far below its value: always for ghosts, for contrast once it has been
/// moved.
constexpr int32_t kGhostFieldOffset = 6;
constexpr int32_t kMovedContrastFieldOffset = 6;

} // namespace tristop
