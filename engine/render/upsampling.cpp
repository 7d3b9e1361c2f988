// SPDX-License-Identifier: MIT
#include "engine/render/upsampling.h"

#include "engine/core/arithmetic.h"

#include <algorithm>
#include <cassert>
#include <cstddef>

namespace hdr {

namespace {

constexpr int kCellShift = 5;
constexpr int kCell = 1 << kCellShift;
constexpr int kBlockShift = 3;
constexpr int kBlock = 1 << kBlockShift;
/// Both cell interpolations together scale by kCell * kCell.
constexpr int kCellValueShift = 2 * kCellShift;
constexpr int kBlockValueShift = 2 * kBlockShift;

MapRows mapRows(const int16_t *map, int columns, int rows, int y, int size) {
    const int centred = y + size / 2;
    const int upper = std::min(centred / size, rows - 1);
    const int lower = std::min(upper + 1, rows - 1);
    return {map + static_cast<ptrdiff_t>(upper) * columns, map + static_cast<ptrdiff_t>(lower) * columns,
            columns, centred % size};
}

/// Calls visit(start, end, value, step) for each stretch of [x0, x1) between two cell centres: the value at
/// its first column and its change over four columns, both in units of 1/1024.
template <typename Visit>
void forEachCellSegment(const MapRows &cells, int x0, int x1, Visit visit) {
    assert(x0 % 4 == 0 && x1 % 4 == 0);
    const int fy = cells.fraction;
    for (int x = x0; x < x1;) {
        const int column = (x + kCell / 2) >> kCellShift;
        const int left = std::min(column, cells.columns - 1);
        const int right = std::min(column + 1, cells.columns - 1);
        const int a = cells.upper[left];
        const int b = cells.upper[right];
        const int e = cells.lower[left];
        const int d = cells.lower[right];
        const int fx = (x + kCell / 2) & (kCell - 1);
        const int top = kCell * a + fx * (b - a);
        const int bottom = kCell * e + fx * (d - e);
        const int end = std::min(x1, column * kCell + kCell / 2);
        visit(x, end, kCell * top + fy * (bottom - top), 4 * ((b - a) * kCell + fy * (a + d - b - e)));
        x = end;
    }
}

void writeSegment(int x, int end, int value, int step, int16_t *destination) {
    for (; x < end; x += 4, value += step)
        destination[x / 4] = wrap16(value >> kCellValueShift);
}

/// One row of gains: those of the blocks' left edges, interpolated between them, the last one repeated.
void gainBlockRow(uint16_t *row, int width, const int16_t *mapRow, const uint16_t *detailGain) {
    const auto gain = [&](int block) { return detailGain[static_cast<uint16_t>(mapRow[block])]; };
    const int blocks = width / kBlock;
    int left = gain(0);
    for (int block = 0; block < blocks; block++) {
        const int right = block + 1 < blocks ? gain(block + 1) : left;
        for (int k = 0; k < kBlock; k++)
            row[block * kBlock + k] = static_cast<uint16_t>(((kBlock - k) * left + k * right) >> kBlockShift);
        left = right;
    }
}

} // namespace

MapRows cellMapRows(const int16_t *map, int columns, int rows, int y) {
    return mapRows(map, columns, rows, y, kCell);
}

MapRows blockMapRows(const int16_t *map, int columns, int rows, int y) {
    return mapRows(map, columns, rows, y, kBlock);
}

void upsample_cell_row_sparse(const MapRows &cells, int x0, int x1, int16_t *destination) {
    forEachCellSegment(cells, x0, x1, [=](int x, int end, int value, int step) {
        writeSegment(x, end, value, step, destination);
    });
}

void upsample_cell_row_runs(const MapRows &cells, int x0, int x1, int16_t *destination, RunList &runs) {
    runs.count = 0;
    runs.columns[runs.count++] = x0;
    bool zero = true;
    forEachCellSegment(cells, x0, x1, [&](int x, int end, int value, int step) {
        writeSegment(x, end, value, step, destination);
        const bool segmentIsZero = value == 0 && step == 0;
        if (segmentIsZero != zero)
            runs.columns[runs.count++] = x;
        zero = segmentIsZero;
    });
    runs.columns[runs.count++] = x1;
}

void upsample_block_row(const MapRows &blocks, int x0, int x1, int16_t *destination) {
    const int fy = blocks.fraction;
    // The vertical interpolation is linear too, so it can be done once a block.
    const auto atColumn = [&](int column) {
        column = std::min(column, blocks.columns - 1);
        return (kBlock - fy) * blocks.upper[column] + fy * blocks.lower[column];
    };
    int column = (x0 + kBlock / 2) >> kBlockShift;
    int left = atColumn(column);
    for (int x = x0; x < x1; column++) {
        const int right = atColumn(column + 1);
        const int centre = column * kBlock - kBlock / 2;
        const int end = std::min(x1, centre + kBlock);
        for (; x < end; x++)
            destination[x] = wrap16((kBlock * left + (x - centre) * (right - left)) >> kBlockValueShift);
        left = right;
    }
}

void build_gain_row(const GainRows &rows, int y, bool firstRow, int width, const int16_t *mapRow,
                    const uint16_t *detailGain) {
    const int phase = y % kBlock;
    assert(phase == 0 || !firstRow);
    if (firstRow)
        gainBlockRow(rows.next, width, mapRow, detailGain);
    if (phase == 0) {
        std::copy_n(rows.next, width, rows.current);
        std::copy_n(rows.next, width, rows.previous);
        return;
    }
    if (phase == 1)
        gainBlockRow(rows.next, width, mapRow, detailGain);
    for (int x = 0; x < width; x++)
        rows.current[x] = static_cast<uint16_t>(
            ((kBlock - phase) * rows.previous[x] + phase * rows.next[x]) >> kBlockShift);
}

} // namespace hdr
