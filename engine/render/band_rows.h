// SPDX-License-Identifier: MIT
// The row buffers that a band of the rendering works in.
#pragma once

#include "engine/render/row_spans.h"
#include "engine/render/upsampling.h"

#include <cstddef>
#include <cstdint>

namespace hdr {

/// A band's row buffers, all in one block; together they fit a second-level cache.
struct BandRows {
    uint8_t *reference; ///< packed 4:2:2 rows: the reference's row before rendering,
    uint8_t *dark;      ///< and the exposures resampled to it
    uint8_t *bright;
    int16_t *weightMid; ///< upsampled cell weights, one a group of four pixels
    int16_t *weightDark;
    int16_t *weightBright;
    RunList darkRuns; ///< where the dark and the bright weights are zero
    RunList brightRuns;
    Span *spans; ///< both run lists merged
    int spanCount;
    GainRows gain;

    /// Bytes of a block for pictures of this width.
    static size_t blockSize(int width);
    /// Divides a block of blockSize(width) bytes.
    static BandRows divide(void *block, int width);
};

} // namespace hdr
