// SPDX-License-Identifier: MIT
#pragma once

#include "engine/core/offscreen.h"

namespace hdr {

/// An inclusive rectangle of source pixels.
struct Region {
    int32_t x0, y0, x1, y1;
};

/// Reduces a picture by an integer factor (8 is the one implemented) into planar 4:4:4: one output pixel a
/// block, the mean of a 3 x 3 lattice of samples in it. `region` null means the whole source; it is trimmed
/// to an even number of blocks each way. With `allocate` set the destination record is filled and its planes
/// allocated in one block (pitches equal to the width) that the caller frees, else it must already be 0x604
/// of the right size. HDR_ERR_PARAM for a factor below 1, HDR_ERR_NOMEM, else 0; a format or factor without a
/// reduction writes no pixel, and a factor above 8 changes nothing at all. Works on four threads.
HdrStatus reduceToWorking(MemContext *memory, const Offscreen *source, Offscreen *destination,
                          const Region *region, int factor, int allocate);

/// Top left source pixel of a block.
struct BlockCorner {
    int32_t x, y;
};

/// Reduces one 8 x 8 block for each pixel of a row of the destination (0x604), as reduceToWorking does, but
/// blocks that may lie anywhere inside the source: `corners` has one entry for each pixel of the row.
void reduceBlocks(const Offscreen *source, Offscreen *destination, int row, const BlockCorner *corners);

} // namespace hdr
