// SPDX-License-Identifier: MIT
// Sampling the dark and the bright exposure where the alignment found the reference's pixels in them.
#pragma once

#include "engine/hdr_engine.h"

#include <cstdint>

namespace hdr {

/// An input's warp grids as the merge tables leave them; without both grids the input is in register.
/// Node (c, q) lies at column 256 c - 128 and row 256 q - 128 of the picture.
struct WarpGrid {
    const int32_t *x; ///< displacement of each node in 1/256 pixel
    const int32_t *y;
    const int32_t *differenceX; ///< next node of the row minus this one, in whole pixels
    const int32_t *differenceY;
    int columns;
};

/// The displacement along a piece of a row that crosses no column of nodes: its value at the first column and
/// its change from column to column, in 1/65536 pixel.
struct WarpLine {
    int64_t x, y;
    int64_t stepX, stepY;

    /// Whether the whole piece moves by one whole number of pixels.
    bool isWholePixels() const { return stepX == 0 && stepY == 0 && (x & 0xFFFF) == 0 && (y & 0xFFFF) == 0; }
};

/// The displacement of the piece that starts at (x, y).
WarpLine warpLine(const WarpGrid &grid, int x, int y);

/// Rows of the reference as they are before rendering overwrites them: those near its top and bottom that
/// resampling by whole pixels can ask for.
struct ReferenceEdges {
    uint8_t *rows; ///< topRows and then bottomRows rows of rowBytes. Owned.
    int32_t topRows;
    int32_t bottomRows;
    int32_t height; ///< of the reference
    int32_t rowBytes;

    /// Copies what displacements between lowest and highest (in whole pixels, downward positive) can ask
    /// for. 0 or HDR_ERR_NOMEM.
    HdrStatus keep(MemContext *memory, const Offscreen &reference, int lowest, int highest);
    const uint8_t *row(int y) const;
    void release(MemContext *memory);
};

/// Samples a packed 4:2:2 picture for columns [x0, x1) of row y (multiples of 4): luminance bilinearly in
/// 1/16 pixel, chroma from the pair that holds the sample, both displaced alike within a group of four.
/// Positions are clamped to the picture, which is at least 5 x 2 pixels. Pixel x goes to destination[2 x],
/// packed 4:2:2.
void resampleBilinear(const Offscreen &source, const WarpLine &line, int y, int x0, int x1,
                      uint8_t *destination);

/// The same for a displacement by (dx, dy) whole pixels: groups of four are copied. Where they lie outside
/// the source the reference's luminance stands in, lifted to the source's level at its edge. `referenceRow`
/// is row y of the reference before rendering.
void resampleWholePixels(const Offscreen &source, int dx, int dy, const uint8_t *referenceRow,
                         const ReferenceEdges &edges, int y, int x0, int x1, uint8_t *destination);

} // namespace hdr
