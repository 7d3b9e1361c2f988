// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "tools/scene_renderer/vector.h"

namespace tristop::scene {

/// An image sensor and the camera's development of its readings.
class Sensor {
public:
    /// Every (seed, shot) has its own noise.
    Sensor(std::uint64_t seed, int shot, bool noisy);

    /// What the sensor reads in each channel at pixel (x, y), which received `exposure` (1 saturates): with
    /// noise, not yet clipped.
    Color readings(Color exposure, int x, int y) const;

    /// Writes the three 8-bit samples of pixel (x, y), which received `exposure` (1 saturates).
    void develop(Color exposure, int x, int y, std::uint8_t *samples) const;

private:
    std::uint64_t key;
    bool noisy;
};

} // namespace tristop::scene
