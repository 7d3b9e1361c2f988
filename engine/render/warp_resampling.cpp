// SPDX-License-Identifier: MIT
#include "engine/render/warp_resampling.h"

#include "engine/core/arithmetic.h"
#include "engine/core/memory.h"
#include "engine/prepare/warp_field.h"

#include <algorithm>
#include <cassert>
#include <cstring>

namespace hdr {

namespace {

/// Shift from 1/65536 pixel to the 1/16 pixel of the sampling position.
constexpr int kPositionShift = 12;

/// Value and change a column of one of the two grids, in 1/65536 pixel.
struct Displacement {
    int64_t value, step;
};

Displacement displacementAt(const int32_t *nodes, const int32_t *differences, int columns, int x, int y) {
    const int column = (x + kWarpSpacing / 2) / kWarpSpacing;
    const int row = (y + kWarpSpacing / 2) / kWarpSpacing;
    const int fx = x - warpNodePosition(column);
    const int fy = y - warpNodePosition(row);
    const ptrdiff_t upper = static_cast<ptrdiff_t>(row) * columns + column;
    const ptrdiff_t lower = upper + columns;
    const auto alongRow = [&](ptrdiff_t node) { return nodes[node] + int64_t{differences[node]} * fx; };
    const auto between = [fy](int64_t a, int64_t b) { return a * kWarpSpacing + fy * (b - a); };
    return {between(alongRow(upper), alongRow(lower)), between(differences[upper], differences[lower])};
}

const uint8_t *packedRow(const Offscreen &picture, int y) {
    return picture.ppu8Plane[0] + static_cast<ptrdiff_t>(y) * picture.pi32Pitch[0];
}

/// The bytes of the pair of pixels that holds column x.
const uint8_t *pairAt(const uint8_t *row, int x) {
    return row + 4 * (x >> 1);
}

/// Takes a group's chroma from the pairs that hold column x and the one two further.
void copyGroupChroma(const uint8_t *row, int x, uint8_t *group) {
    for (int pair = 0; pair < 2; pair++) {
        group[4 * pair + 1] = pairAt(row, x + 2 * pair)[1];
        group[4 * pair + 3] = pairAt(row, x + 2 * pair)[3];
    }
}

void copyGroup(const uint8_t *row, int x, uint8_t *group) {
    if (x % 2 == 0) {
        std::memcpy(group, row + 2 * x, 8);
        return;
    }
    for (int i = 0; i < 4; i++)
        group[2 * i] = row[2 * (x + i)];
    copyGroupChroma(row, x, group);
}

int groupLuminance(const uint8_t *row, int x) {
    return row[2 * x] + row[2 * x + 2] + row[2 * x + 4] + row[2 * x + 6];
}

} // namespace

WarpLine warpLine(const WarpGrid &grid, int x, int y) {
    if (!grid.x || !grid.y)
        return {};
    const Displacement horizontal = displacementAt(grid.x, grid.differenceX, grid.columns, x, y);
    const Displacement vertical = displacementAt(grid.y, grid.differenceY, grid.columns, x, y);
    return {horizontal.value, vertical.value, horizontal.step, vertical.step};
}

HdrStatus ReferenceEdges::keep(MemContext *memory, const Offscreen &reference, int lowest, int highest) {
    release(memory);
    height = reference.i32Height;
    rowBytes = 2 * reference.i32Width;
    topRows = highest > 0 ? std::min(highest, height - 1) + 1 : 0;
    bottomRows = lowest < 0 ? std::min(-lowest, height - 1) + 1 : 0;
    if (topRows + bottomRows == 0)
        return HDR_OK;
    const auto bytes = static_cast<size_t>(rowBytes);
    rows = allocateArray<uint8_t>(memory, static_cast<size_t>(topRows + bottomRows) * bytes);
    if (!rows)
        return HDR_ERR_NOMEM;
    for (int i = 0; i < topRows; i++)
        std::memcpy(rows + static_cast<size_t>(i) * bytes, packedRow(reference, i), bytes);
    for (int i = 0; i < bottomRows; i++)
        std::memcpy(rows + static_cast<size_t>(topRows + i) * bytes,
                    packedRow(reference, height - bottomRows + i), bytes);
    return HDR_OK;
}

const uint8_t *ReferenceEdges::row(int y) const {
    assert(y < topRows || y >= height - bottomRows);
    const int index = y < topRows ? y : topRows + y - (height - bottomRows);
    return rows + static_cast<ptrdiff_t>(index) * rowBytes;
}

void ReferenceEdges::release(MemContext *memory) {
    releaseArray(memory, rows);
}

void resampleBilinear(const Offscreen &source, const WarpLine &line, int y, int x0, int x1,
                      uint8_t *destination) {
    const int64_t lastColumn = source.i32Width - 5;
    const int64_t lastRow = source.i32Height - 2;
    int64_t displacementX = line.x;
    int64_t displacementY = line.y;
    for (int x = x0; x < x1; x += 4) {
        const int64_t positionX = 16 * x - (displacementX >> kPositionShift);
        const int64_t positionY = 16 * y - (displacementY >> kPositionShift);
        const int column = static_cast<int>(std::clamp<int64_t>(positionX >> 4, 0, lastColumn));
        const int row = static_cast<int>(std::clamp<int64_t>(positionY >> 4, 0, lastRow));
        const int fx = static_cast<int>(positionX & 15);
        const int fy = static_cast<int>(positionY & 15);
        const uint8_t *upper = packedRow(source, row);
        const uint8_t *lower = packedRow(source, row + 1);
        uint8_t *group = destination + 2 * x;
        for (int i = 0; i < 4; i++) {
            const int at = 2 * (column + i);
            const int top = 16 * upper[at] + (upper[at + 2] - upper[at]) * fx;
            const int bottom = 16 * lower[at] + (lower[at + 2] - lower[at]) * fx;
            group[2 * i] = static_cast<uint8_t>((top * 16 + (bottom - top) * fy) >> 8);
        }
        copyGroupChroma(upper, column, group);
        displacementX += 4 * line.stepX;
        displacementY += 4 * line.stepY;
    }
}

void resampleWholePixels(const Offscreen &source, int dx, int dy, const uint8_t *referenceRow,
                         const ReferenceEdges &edges, int y, int x0, int x1, uint8_t *destination) {
    const int lastColumn = source.i32Width - 4;
    const int lastRow = source.i32Height - 1;
    const int row = std::clamp(y - dy, 0, lastRow);
    const uint8_t *samples = packedRow(source, row);
    const uint8_t *shiftedBack = row == y - dy ? referenceRow : edges.row(std::clamp(row + dy, 0, lastRow));
    for (int x = x0; x < x1; x += 4) {
        uint8_t *group = destination + 2 * x;
        const int column = std::clamp(x - dx, 0, lastColumn);
        copyGroup(samples, column, group);
        if (row == y - dy && column == x - dx)
            continue;
        const int lift = (groupLuminance(samples, column) -
                          groupLuminance(shiftedBack, std::clamp(column + dx, 0, lastColumn))) >>
                         2;
        for (int i = 0; i < 4; i++)
            group[2 * i] = static_cast<uint8_t>(clamp8(referenceRow[2 * (x + i)] + lift));
    }
}

} // namespace hdr
