// SPDX-License-Identifier: MIT
// A picture's luminance at halving resolutions, in levels that can be compared between exposures.
#pragma once

#include "engine/core/buffer.h"
#include "engine/core/plane.h"

#include <array>
#include <cstdint>

namespace hdr {

/// Comparison levels of pixels that only tell that the scene is darker, or brighter, than the exposure could
/// show; measured levels lie between them.
inline constexpr uint8_t kCrushed = 0;
inline constexpr uint8_t kClipped = 255;

constexpr bool isMeasured(uint8_t level) {
    return level != kCrushed && level != kClipped;
}

/// Maps the luminance of an exposure, in quarters of a level, to the levels in which exposures are compared.
using ComparisonTones = std::array<uint8_t, 1024>;

/// The comparison tones of an exposure whose luminance `tones` (256 entries) brings to the reference's
/// levels; null for the reference itself.
ComparisonTones comparisonTones(const uint8_t *tones);

/// Luminance of one picture in comparison tones. Level k holds the means of 2^k x 2^k pixels, whole ones
/// only; its pixel i is centred on the full-resolution position (i + 0.5) 2^k - 0.5. The finest levels of a
/// large picture are not kept: windows of them are computed from the picture, which must stay alive and
/// unchanged.
class LumaPyramid {
public:
    /// Builds the levels of a picture of at least 1 x 1 pixels on four threads. 0 or HDR_ERR_NOMEM.
    HdrStatus build(MemContext *memory, const Offscreen &picture, const ComparisonTones &tones);

    int width(int level) const { return source.i32Width >> level; }
    int height(int level) const { return source.i32Height >> level; }
    /// The finest level, kept or not, whose longer side is at most `side` pixels and whose shorter side is at
    /// least 1.
    int levelOfSide(int side) const;
    /// A kept level: one whose longer side is at most kLongestKeptSide.
    Plane<const uint8_t> level(int index) const;
    /// Writes width x height samples of any level from column x and row y on, packed; kCrushed outside the
    /// picture.
    void read(int level, int x, int y, int width, int height, uint8_t *samples) const;

    static constexpr int kLongestKeptSide = 1536;

private:
    static constexpr int kMostLevels = 12;

    Offscreen source{};
    ComparisonTones tones{};
    int finest = 0;
    std::array<Buffer<uint8_t>, kMostLevels> levels; ///< the kept ones, from the finest on
};

} // namespace hdr
