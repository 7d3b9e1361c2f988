// SPDX-License-Identifier: MIT
#include "engine/analysis/ghost_masks.h"

#include "engine/prepare/preparation.h"

#include <algorithm>
#include <cassert>

namespace hdr {
namespace {

/// Marks a pixel that changes at the end of the iteration: neither set nor clear for its neighbours.
constexpr uint8_t kChanging = 1;

/// Calls visit(pixel, left, above, right, below) for every pixel; a neighbour beyond the edge is the pixel
/// itself.
template <typename Visit>
void forEachWithNeighbours(Plane<uint8_t> mask, Visit visit) {
    for (int y = 0; y < mask.height; y++) {
        const uint8_t *above = mask.row(std::max(y - 1, 0));
        const uint8_t *below = mask.row(std::min(y + 1, mask.height - 1));
        uint8_t *row = mask.row(y);
        for (int x = 0; x < mask.width; x++)
            visit(row[x], row[std::max(x - 1, 0)], above[x], row[std::min(x + 1, mask.width - 1)], below[x]);
    }
}

void settle(Plane<uint8_t> mask, uint8_t value) {
    for (int y = 0; y < mask.height; y++)
        std::replace(mask.row(y), mask.row(y) + mask.width, kChanging, value);
}

/// Sets the clear corners that pixels of the same iteration reach.
void growIntoCorners(Plane<uint8_t> mask) {
    const int bottom = mask.height - 1;
    const int right = mask.width - 1;
    for (int x : {0, right}) {
        const int inward = x == 0 ? 1 : right - 1;
        if (!mask(x, 0) && mask(inward, 0) && mask(x, 1))
            mask(x, 0) = kChanging;
        if (!mask(x, bottom) && (mask(inward, bottom) || mask(x, bottom - 1)))
            mask(x, bottom) = kChanging;
    }
}

} // namespace

void erode_mask4(Plane<uint8_t> mask, int iterations) {
    for (int i = 0; i < iterations; i++) {
        forEachWithNeighbours(mask,
                              [](uint8_t &pixel, uint8_t left, uint8_t above, uint8_t right, uint8_t below) {
                                  if (pixel && (!left || !above || !right || !below))
                                      pixel = kChanging;
                              });
        settle(mask, 0);
    }
}

void dilate_mask4(Plane<uint8_t> mask, int iterations) {
    assert(mask.width >= 3 && mask.height >= 3);
    for (int i = 0; i < iterations; i++) {
        forEachWithNeighbours(mask, [](uint8_t &pixel, uint8_t left, uint8_t above, uint8_t right,
                                       uint8_t below) {
            if (!pixel && (left == kMaskSet || above == kMaskSet || right == kMaskSet || below == kMaskSet))
                pixel = kChanging;
        });
        growIntoCorners(mask);
        settle(mask, kMaskSet);
    }
}

void dilateMask8(Plane<uint8_t> mask) {
    forEachWithNeighbours(mask, [](uint8_t &pixel, uint8_t left, uint8_t, uint8_t right, uint8_t) {
        if (!pixel && (left == kMaskSet || right == kMaskSet))
            pixel = kChanging;
    });
    settle(mask, kMaskSet);
    forEachWithNeighbours(mask, [](uint8_t &pixel, uint8_t, uint8_t above, uint8_t, uint8_t below) {
        if (!pixel && (above == kMaskSet || below == kMaskSet))
            pixel = kChanging;
    });
    settle(mask, kMaskSet);
}

void remove_isolated(Plane<const uint8_t> source, Plane<uint8_t> destination) {
    for (int y = 1; y < source.height - 1; y++) {
        const uint8_t *above = source.row(y - 1);
        const uint8_t *row = source.row(y);
        const uint8_t *below = source.row(y + 1);
        uint8_t *target = destination.row(y);
        for (int x = 1; x < source.width - 1; x++) {
            if (!row[x])
                continue;
            const int neighbours = (row[x - 1] != 0) + (above[x] != 0) + (row[x + 1] != 0) + (below[x] != 0);
            target[x] = neighbours < 2 ? uint8_t{0} : row[x];
        }
    }
}

void reduce_block_mean8(Plane<const uint8_t> picture, Plane<uint8_t> grid) {
    const int columns = std::min(grid.width - 2, picture.width / kReducedCellSize);
    const int rows = std::min(grid.height - 2, picture.height / kReducedCellSize);
    for (int y = 0; y < rows; y++) {
        const uint8_t *first = picture.row(kReducedCellSize * y);
        const uint8_t *third = picture.row(kReducedCellSize * y + 2);
        uint8_t *cells = grid.row(y + 1) + 1;
        for (int cell = 0; cell < columns; cell++) {
            int sum = 0;
            for (int x = kReducedCellSize * cell; x < kReducedCellSize * (cell + 1); x++)
                sum += first[x] + third[x];
            cells[cell] = static_cast<uint8_t>(sum >> 3);
        }
    }
}

} // namespace hdr
