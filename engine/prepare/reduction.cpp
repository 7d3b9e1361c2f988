// SPDX-License-Identifier: MIT
#include "engine/prepare/reduction.h"

#include "engine/core/arithmetic.h"
#include "engine/core/memory.h"
#include "engine/core/worker.h"

#include <array>

namespace hdr {

namespace {

constexpr int kFactor = 8;
/// Rows sampled in a block, and the chroma pairs of 4:2:x formats sampled in a row of it.
constexpr std::array<int, 3> kRows = {0, 3, 6};
constexpr std::array<int, 3> kChromaPairs = {0, 1, 3};

/// Where a format keeps its samples.
struct Layout {
    int lumaBytes;                  ///< from one luminance sample to the next
    std::array<int, 3> lumaColumns; ///< pixels sampled in a row of a block
    int pairBytes;                  ///< from the chroma sample of one pair of pixels to that of the next
    int uPlane, uByte;              ///< plane of U, and its place in a pair
    int vPlane, vByte;
    bool halfChromaRows;
    bool wholeEighths; ///< whether the first eight samples count with their truncated mean
};

constexpr Layout kPacked = {2, {0, 2, 6}, 4, 0, 1, 0, 3, false, true};
constexpr Layout kPlanar420 = {1, {0, 3, 6}, 1, 1, 0, 2, 0, true, false};
constexpr Layout kPlanar422 = {1, {0, 3, 6}, 1, 1, 0, 2, 0, false, false};
constexpr Layout kSemiPlanarUv = {1, {0, 3, 6}, 2, 1, 0, 1, 1, true, false};
constexpr Layout kSemiPlanarVu = {1, {0, 3, 6}, 2, 1, 1, 1, 0, true, false};
constexpr Layout kSemiPlanar422 = {1, {0, 3, 6}, 2, 1, 0, 1, 1, false, false};

/// The three sampled rows of a block in one channel, and the three byte offsets sampled in each.
using Rows = std::array<const uint8_t *, 3>;
using Offsets = std::array<int, 3>;

/// The mean of nine samples. The multiplier is a hair below 2^20 / 9, so a constant block loses one level.
template <Layout layout>
uint8_t meanOfNine(const Rows &rows, const Offsets &at) {
    const int firstEight = rows[0][at[0]] + rows[0][at[1]] + rows[0][at[2]] + rows[1][at[0]] +
                           rows[1][at[1]] + rows[1][at[2]] + rows[2][at[0]] + rows[2][at[1]];
    const int ninth = rows[2][at[2]];
    const int sum = (layout.wholeEighths ? roundDown(firstEight, 8) : firstEight) + ninth;
    return static_cast<uint8_t>((sum * 116508) >> 20);
}

Rows rowsOf(const Offscreen &source, int plane, int y, bool half) {
    Rows rows;
    for (size_t i = 0; i < rows.size(); i++) {
        const int row = half ? (y + kRows[i]) / 2 : y + kRows[i];
        rows[i] = source.ppu8Plane[plane] + ptrdiff_t{row} * source.pi32Pitch[plane];
    }
    return rows;
}

/// Reduces one block for each of the first `width` pixels of a row of the destination: the one whose top left
/// pixel is cornerOf(column). `source` is a copy, which the pixels written cannot change.
template <Layout layout, typename CornerOf>
void reduceRowBy8(Offscreen source, const Offscreen &destination, int row, int width, CornerOf cornerOf) {
    std::array<uint8_t *, 3> out;
    for (size_t plane = 0; plane < out.size(); plane++)
        out[plane] = destination.ppu8Plane[plane] + ptrdiff_t{row} * destination.pi32Pitch[plane];
    for (int column = 0; column < width; column++) {
        const auto [x, y] = cornerOf(column);
        Offsets luma, u, v;
        for (size_t i = 0; i < luma.size(); i++) {
            luma[i] = layout.lumaBytes * (x + layout.lumaColumns[i]);
            const int pair = layout.pairBytes * (x / 2 + kChromaPairs[i]);
            u[i] = pair + layout.uByte;
            v[i] = pair + layout.vByte;
        }
        out[0][column] = meanOfNine<layout>(rowsOf(source, 0, y, false), luma);
        out[1][column] = meanOfNine<layout>(rowsOf(source, layout.uPlane, y, layout.halfChromaRows), u);
        out[2][column] = meanOfNine<layout>(rowsOf(source, layout.vPlane, y, layout.halfChromaRows), v);
    }
}

/// reduceRowBy8 for the source's format; nothing for a format without a reduction.
template <typename CornerOf>
void reduceRow(const Offscreen &source, Offscreen &destination, int row, int width, CornerOf cornerOf) {
    switch (source.u32PixelArrayFormat) {
    case HDR_FORMAT_YUY2:
        return reduceRowBy8<kPacked>(source, destination, row, width, cornerOf);
    case HDR_FORMAT_I420:
        return reduceRowBy8<kPlanar420>(source, destination, row, width, cornerOf);
    case HDR_FORMAT_I422:
        return reduceRowBy8<kPlanar422>(source, destination, row, width, cornerOf);
    case HDR_FORMAT_NV12:
        return reduceRowBy8<kSemiPlanarUv>(source, destination, row, width, cornerOf);
    case HDR_FORMAT_NV21:
        return reduceRowBy8<kSemiPlanarVu>(source, destination, row, width, cornerOf);
    case HDR_FORMAT_NV16:
        return reduceRowBy8<kSemiPlanar422>(source, destination, row, width, cornerOf);
    default:
        return;
    }
}

/// Makes a packed 0x604 picture of one block; false when there is no room.
bool allocatePacked(MemContext *memory, Offscreen *picture, int width, int height) {
    const size_t planeSize = static_cast<size_t>(width) * static_cast<size_t>(height);
    uint8_t *block = allocateArray<uint8_t>(memory, 3 * planeSize);
    if (!block)
        return false;
    *picture = {HDR_FORMAT_YUV444,
                width,
                height,
                {block, block + planeSize, block + 2 * planeSize, nullptr},
                {width, width, width, 0}};
    return true;
}

} // namespace

HdrStatus reduceToWorking(MemContext *memory, const Offscreen *source, Offscreen *destination,
                          const Region *region, int factor, int allocate) {
    const Region area = region ? *region : Region{0, 0, source->i32Width - 1, source->i32Height - 1};
    if (factor < 1)
        return HDR_ERR_PARAM;
    if (factor > kFactor)
        return HDR_OK;
    const int width = 2 * ((area.x1 + 1 - area.x0) / (2 * factor));
    const int height = 2 * ((area.y1 + 1 - area.y0) / (2 * factor));
    if (allocate && !allocatePacked(memory, destination, width, height))
        return HDR_ERR_NOMEM;
    if (factor < kFactor)
        return HDR_OK;
    runOnFourParts(0, height, [&](const RangePart &rows) {
        for (int row = rows.first; row < rows.end; row++)
            reduceRow(*source, *destination, row, width, [&](int column) {
                return BlockCorner{area.x0 + column * kFactor, area.y0 + row * kFactor};
            });
    });
    return HDR_OK;
}

void reduceBlocks(const Offscreen *source, Offscreen *destination, int row, const BlockCorner *corners) {
    reduceRow(*source, *destination, row, destination->i32Width,
              [corners](int column) { return corners[column]; });
}

} // namespace hdr
