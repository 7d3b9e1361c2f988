// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/hdr_engine.h"
#include "tools/quality/view_cache.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tristop::quality {

/// The shots of a rendered bracket in their order; the engine's reference is the middle one.
enum Shot { kDark = 0, kMiddle = 1, kBright = 2 };

/// One channel of a picture.
struct Luminance {
    int width = 0, height = 0;
    std::vector<float> values;

    float at(int x, int y) const { return values[index(x, y)]; }
    float &at(int x, int y) { return values[index(x, y)]; }

private:
    std::size_t index(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
    }
};

/// The luminance, 0 to 255, of a 0x501 picture.
Luminance luminanceOf(const Offscreen &picture);

/// Three photographs as engine inputs (0x501); owns their pixels, which a merge uses up.
class Bracket {
public:
    /// Three grey pictures of one size, for the caller to fill. The width must be a multiple of 4.
    Bracket(int width, int height);
    /// The photographs of a rendered scene, whose width must be a multiple of 4.
    Bracket(const scene::SceneSettings &settings, ViewCache &views);
    Bracket(const Bracket &) = delete;
    Bracket &operator=(const Bracket &) = delete;

    std::array<std::vector<std::uint8_t>, 3> bytes;
    std::array<Offscreen, 3> pictures;
};

} // namespace tristop::quality
