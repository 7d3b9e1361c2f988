// SPDX-License-Identifier: MIT
#include "engine/check/chroma_grid.h"

#include "engine/core/arithmetic.h"
#include "engine/core/plane.h"
#include "engine/prepare/preparation.h"

#include <algorithm>
#include <optional>

namespace hdr {

namespace {

/// Rows and columns between the samples of a cell: four of them each way.
constexpr int kSampleStep = 8;
constexpr int kSamplesAcross = kCellSize / kSampleStep;

/// How a format is sampled. The first grid takes the first byte of an interleaved pair whatever it holds.
struct ChromaLayout {
    int firstPlane, firstByte; ///< plane, and place within a pair of pixels
    int secondPlane, secondByte;
    int pairBytes;
    int rowDivisor;   ///< picture rows to a chroma row, as they are read
    int planeDivisor; ///< picture rows to a row of the plane
};

std::optional<ChromaLayout> chromaLayoutOf(uint32_t format) {
    constexpr uint32_t kPlanar420Variant = 0x605;
    switch (format) {
    case HDR_FORMAT_YUY2:
        return ChromaLayout{0, 1, 0, 3, 4, 1, 1};
    case HDR_FORMAT_I420:
    case kPlanar420Variant:
        return ChromaLayout{1, 0, 2, 0, 1, 2, 2};
    case HDR_FORMAT_I422:
        return ChromaLayout{1, 0, 2, 0, 1, 1, 1};
    case HDR_FORMAT_NV12:
    case HDR_FORMAT_NV21:
        return ChromaLayout{1, 0, 1, 1, 2, 2, 2};
    case HDR_FORMAT_NV16: // only the upper half of its chroma rows is looked at
        return ChromaLayout{1, 0, 1, 1, 2, 2, 1};
    default:
        return std::nullopt;
    }
}

/// Adds the samples of one row of a channel to the sums of its row of cells.
void addRow(const uint8_t *samples, int pairBytes, int fullCells, uint16_t *sums) {
    const int step = kSampleStep / 2 * pairBytes;
    for (int i = 0; i < fullCells * kSamplesAcross; i++) {
        uint16_t &sum = sums[i / kSamplesAcross];
        sum = static_cast<uint16_t>(sum + samples[i * step]);
    }
}

} // namespace

void chromaGrid(HdrContext * /*context*/, const Offscreen *inputs, int input, uint16_t *first,
                uint16_t *second) {
    const Offscreen &picture = inputs[input];
    const int columns = ceilDivide(picture.i32Width, kCellSize);
    const int rows = ceilDivide(picture.i32Height, kCellSize);
    const int fullColumns = picture.i32Width / kCellSize;
    const Plane<uint16_t> firstGrid(first, columns, rows);
    const Plane<uint16_t> secondGrid(second, columns, rows);
    const size_t cells = static_cast<size_t>(columns) * static_cast<size_t>(rows);
    std::fill_n(first, cells, uint16_t{0});
    std::fill_n(second, cells, uint16_t{0});

    if (const auto layout = chromaLayoutOf(picture.u32PixelArrayFormat)) {
        const int lastRow = picture.i32Height / layout->planeDivisor - 1;
        for (int y = 0; y < picture.i32Height; y += kSampleStep) {
            // The last row of an odd height has no chroma row of its own.
            const ptrdiff_t row = std::min(y / layout->rowDivisor, lastRow);
            const auto samples = [&](int plane, int byte) {
                return picture.ppu8Plane[plane] + row * picture.pi32Pitch[plane] + byte;
            };
            uint16_t *firstSums = firstGrid.row(y / kCellSize);
            uint16_t *secondSums = secondGrid.row(y / kCellSize);
            addRow(samples(layout->firstPlane, layout->firstByte), layout->pairBytes, fullColumns, firstSums);
            addRow(samples(layout->secondPlane, layout->secondByte), layout->pairBytes, fullColumns,
                   secondSums);
            // Only the first channel fills the partial cell at the right edge.
            if (fullColumns > 0 && fullColumns < columns)
                firstSums[fullColumns] = firstSums[fullColumns - 1];
        }
    }

    for (const Plane<uint16_t> &grid : {firstGrid, secondGrid}) {
        for (size_t i = 0; i < cells; i++)
            grid.data[i] = static_cast<uint16_t>((grid.data[i] + 8) >> 4);
        if (picture.i32Height / kCellSize < rows && rows > 1)
            std::copy_n(grid.row(rows - 2), columns, grid.row(rows - 1));
    }
}

} // namespace hdr
