// SPDX-License-Identifier: MIT
#include "engine/analysis/grid_blocks.h"

#include "engine/prepare/preparation.h"

#include <algorithm>

namespace hdr {
namespace {

/// Calls visit(m, x0, x1, y) for each row of pixels [x0, x1) that a mask cell of value m governs.
template <typename Visit>
void forEachCellRow(int width, int height, Plane<const uint8_t> mask, Visit visit) {
    const int lastColumn = mask.width - 2;
    const int rows = std::min(height, kReducedCellSize * (mask.height - 2));
    for (int y = 0; y < rows; y++) {
        const uint8_t *cells = mask.row(y / kReducedCellSize + 1);
        for (int gx = 1; gx <= lastColumn; gx++) {
            const int x0 = std::min(kReducedCellSize * (gx - 1), width);
            const int x1 = gx == lastColumn ? width : std::min(x0 + kReducedCellSize, width);
            visit(int{cells[gx]}, x0, x1, y);
        }
    }
}

} // namespace

void copy_blocks_where_clear(Plane<uint8_t> destination, Plane<const uint8_t> source,
                             Plane<const uint8_t> mask) {
    forEachCellRow(destination.width, destination.height, mask, [&](int m, int x0, int x1, int y) {
        if (m == 0)
            std::copy(source.row(y) + x0, source.row(y) + x1, destination.row(y) + x0);
    });
}

void blend_blocks_128(Plane<uint8_t> destination, Plane<const uint8_t> source, Plane<const uint8_t> mask) {
    forEachCellRow(destination.width, destination.height, mask, [&](int m, int x0, int x1, int y) {
        if (m == 0)
            return;
        const int weight = std::min(m, 128);
        const uint8_t *from = source.row(y);
        uint8_t *to = destination.row(y);
        for (int x = x0; x < x1; x++)
            to[x] = static_cast<uint8_t>((from[x] * weight + to[x] * (128 - weight)) >> 7);
    });
}

void blend_blocks_255(Plane<uint8_t> destination, Plane<const uint8_t> source, Plane<const uint8_t> mask) {
    forEachCellRow(destination.width, destination.height, mask, [&](int m, int x0, int x1, int y) {
        if (m == 0)
            return;
        const uint8_t *from = source.row(y);
        uint8_t *to = destination.row(y);
        for (int x = x0; x < x1; x++)
            to[x] = static_cast<uint8_t>((from[x] * m + to[x] * (255 - m)) >> 8);
    });
}

} // namespace hdr
