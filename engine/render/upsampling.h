// SPDX-License-Identifier: MIT
// Bringing the coarse maps of the analysis and the local tone map to a row of the full-size picture.
#pragma once

#include "engine/render/row_spans.h"

#include <cstdint>

namespace hdr {

/// The two neighbouring rows of a map that a picture row lies between, and how far it is from the upper one.
/// Maps carry a one-sample frame; map column j is centred on the picture between columns (j - 1) * size and
/// j * size, where size is that of a cell (32 pixels) or a block (8 pixels), and rows likewise.
struct MapRows {
    const int16_t *upper;
    const int16_t *lower; ///< the upper row again where the map ends
    int columns;          ///< frame included
    int fraction;         ///< distance from the upper row's centre in pixels, 0 to size - 1
};

/// The rows of a framed map of 32-pixel cells (columns x rows, packed) around picture row y.
MapRows cellMapRows(const int16_t *map, int columns, int rows, int y);
/// The same for a map of 8-pixel blocks.
MapRows blockMapRows(const int16_t *map, int columns, int rows, int y);

/// Interpolates a cell map bilinearly at columns x0, x0 + 4, … below x1 (all multiples of 4); the value of
/// column x goes to destination[x / 4].
void upsample_cell_row_sparse(const MapRows &cells, int x0, int x1, int16_t *destination);

/// upsample_cell_row_sparse, recording in `runs` where the row is zero. Stretches begin and end at cell
/// centres: a segment between two of them is zero only when it is so all along and before rounding. The list
/// has room for width / 32 + 4 columns.
void upsample_cell_row_runs(const MapRows &cells, int x0, int x1, int16_t *destination, RunList &runs);

/// Interpolates a block map bilinearly at every column of [x0, x1) into destination[x].
void upsample_block_row(const MapRows &blocks, int x0, int x1, int16_t *destination);

/// Gains of the current row in 1/1024, and of the rows on the top edges of this and the next block of 8.
struct GainRows {
    uint16_t *current;
    uint16_t *next;
    uint16_t *previous;
};

/// Moves the gain rows on to picture row y: the detail gain of the local tone map, interpolated bilinearly
/// between the top left pixels of its 8 x 8 blocks. A band begins on a multiple of 8 (`firstRow`) and goes on
/// row by row. `mapRow` has width / 8 samples and is the map's row ceil(y / 8), or its last.
void build_gain_row(const GainRows &rows, int y, bool firstRow, int width, const int16_t *mapRow,
                    const uint16_t *detailGain);

} // namespace hdr
