// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/scene_renderer/noise.h"
#include "tools/scene_renderer/vector.h"

namespace tristop::scene {

/// The sunlit country outside the window: sky and clouds, mountains, a lake with the sun's glitter and a
/// boat, a house with tiled roof, a lawn with flowers. It is far enough to depend on the direction of sight
/// alone.
class Landscape {
public:
    explicit Landscape(std::uint64_t seed) : noise(seed) {}

    /// Radiance from the direction (right, up, 1); `footprint` is the width of a pixel in the same units.
    Color radiance(float right, float up, float footprint) const;

private:
    Color sky(float right, float up, float footprint) const;
    Color mountains(float right, float up, float ridge, float footprint) const;
    Color forest(float right, float up, float ridge, float footprint) const;
    Color lake(float right, float up, float footprint) const;
    Color lawn(float right, float up, float footprint) const;
    Color flowerBed(float right, float up, float top, float footprint) const;
    float cloudDensity(float right, float up, int octaves, float footprint) const;
    bool leaf(float x, float y, float density, int layer, float &tone) const;
    bool boat(float right, float up, Color &color) const;
    bool house(float right, float up, float footprint, Color &color) const;
    bool tree(float right, float up, float footprint, Color &color) const;

    Noise noise;
};

} // namespace tristop::scene
