// SPDX-License-Identifier: MIT
#include "engine/prepare/luma_pyramid.h"

#include "engine/core/worker.h"

#include <algorithm>

namespace hdr {

namespace {

/// Luminance that a photograph can resolve: studio-range video levels end at 16 and 235, and the last few
/// levels before them are noise or shoulder.
constexpr int kLowestMeasured = 18;
constexpr int kHighestMeasured = 229;

/// Bytes from one luminance sample of a row to the next.
int lumaStep(const Offscreen &picture) {
    return picture.u32PixelArrayFormat == HDR_FORMAT_YUY2 ? 2 : 1;
}

const uint8_t *lumaRow(const Offscreen &picture, int y) {
    return picture.ppu8Plane[0] + static_cast<ptrdiff_t>(y) * picture.pi32Pitch[0];
}

/// Sums `Size` rows of samples that are `Step` bytes apart, column by column.
template <int Size, int Step>
void sumRows(const uint8_t *samples, ptrdiff_t pitch, int count, uint16_t *__restrict sums) {
    for (int x = 0; x < count; x++) {
        uint16_t sum = 0;
        for (int row = 0; row < Size; row++)
            sum = static_cast<uint16_t>(sum + samples[row * pitch + Step * x]);
        sums[x] = sum;
    }
}

/// Means of Size x Size pixels in comparison tones, for `count` blocks of the picture from pixel (x, y) on.
/// `sums` has room for a row of the blocks' pixels.
template <int Size>
void averageBlocksOf(const Offscreen &picture, const ComparisonTones &tones, int x, int y, int count,
                     uint16_t *sums, uint8_t *means) {
    const int step = lumaStep(picture);
    const uint8_t *samples = lumaRow(picture, y) + static_cast<ptrdiff_t>(x) * step;
    const auto sumAll = step == 2 ? sumRows<Size, 2> : sumRows<Size, 1>;
    sumAll(samples, picture.pi32Pitch[0], count * Size, sums);
    for (int i = 0; i < count; i++, sums += Size) {
        uint32_t sum = 0;
        for (int k = 0; k < Size; k++)
            sum += sums[k];
        means[i] = tones[4 * sum / (Size * Size)];
    }
}

/// The same for blocks of 2^level x 2^level pixels.
void averageBlocks(const Offscreen &picture, const ComparisonTones &tones, int level, int x, int y, int count,
                   uint16_t *sums, uint8_t *means) {
    if (level == 0) {
        const int step = lumaStep(picture);
        const uint8_t *samples = lumaRow(picture, y) + static_cast<ptrdiff_t>(x) * step;
        for (int i = 0; i < count; i++)
            means[i] = tones[4 * static_cast<size_t>(samples[i * step])];
        return;
    }
    constexpr std::array average = {averageBlocksOf<2>,  averageBlocksOf<4>,  averageBlocksOf<8>,
                                    averageBlocksOf<16>, averageBlocksOf<32>, averageBlocksOf<64>};
    assert(level <= static_cast<int>(average.size()));
    average[static_cast<size_t>(level - 1)](picture, tones, x, y, count, sums, means);
}

/// Means of 2 x 2 samples of two rows; crushed or clipped where most of the four are.
void halveRows(const uint8_t *upper, const uint8_t *lower, int count, uint8_t *__restrict means) {
    for (int x = 0; x < count; x++) {
        const int16_t a = upper[2 * x], b = upper[2 * x + 1], c = lower[2 * x], d = lower[2 * x + 1];
        const int16_t mean = static_cast<int16_t>((a + b + c + d + 2) >> 2);
        const int16_t crushed =
            static_cast<int16_t>((a == kCrushed) + (b == kCrushed) + (c == kCrushed) + (d == kCrushed));
        const int16_t clipped =
            static_cast<int16_t>((a == kClipped) + (b == kClipped) + (c == kClipped) + (d == kClipped));
        const int16_t between = std::clamp<int16_t>(mean, kCrushed + 1, kClipped - 1);
        const int16_t bright = clipped >= 3 ? int16_t{kClipped} : between;
        means[x] = static_cast<uint8_t>(crushed >= 3 ? int16_t{kCrushed} : bright);
    }
}

} // namespace

ComparisonTones comparisonTones(const uint8_t *tones) {
    const auto mapped = [tones](int level) { return tones ? static_cast<int>(tones[level]) : level; };
    ComparisonTones comparison{};
    for (int quarters = 0; quarters < 4 * 256; quarters++) {
        const int level = quarters / 4;
        const int fraction = quarters % 4;
        const int next = std::min(level + 1, 255);
        const int value = (mapped(level) * (4 - fraction) + mapped(next) * fraction + 2) / 4;
        uint8_t &entry = comparison[static_cast<size_t>(quarters)];
        if (quarters < 4 * kLowestMeasured)
            entry = kCrushed;
        else if (quarters > 4 * kHighestMeasured)
            entry = kClipped;
        else
            entry = static_cast<uint8_t>(std::clamp<int>(value, kCrushed + 1, kClipped - 1));
    }
    return comparison;
}

HdrStatus LumaPyramid::build(MemContext *memory, const Offscreen &picture,
                             const ComparisonTones &comparison) {
    source = picture;
    tones = comparison;
    finest = levelOfSide(kLongestKeptSide);

    int last = finest;
    while (last - finest + 1 < kMostLevels && std::min(width(last + 1), height(last + 1)) >= 1)
        last++;
    for (int k = finest; k <= last; k++) {
        Buffer<uint8_t> &buffer = levels[static_cast<size_t>(k - finest)];
        buffer = Buffer<uint8_t>(memory, static_cast<size_t>(width(k)) * static_cast<size_t>(height(k)));
        if (!buffer)
            return HDR_ERR_NOMEM;
    }

    const size_t rowPixels = static_cast<size_t>(width(finest)) << finest;
    Buffer<uint16_t> sums(memory, 4 * rowPixels);
    if (!sums)
        return HDR_ERR_NOMEM;
    runOnFourParts(0, height(finest), [&](const RangePart &rows) {
        uint16_t *ownSums = sums.data() + static_cast<size_t>(rows.part) * rowPixels;
        for (int y = rows.first; y < rows.end; y++)
            averageBlocks(source, tones, finest, 0, y << finest, width(finest), ownSums,
                          levels[0].data() + static_cast<ptrdiff_t>(y) * width(finest));
    });

    for (int k = finest + 1; k <= last; k++) {
        const Plane<const uint8_t> fine = level(k - 1);
        uint8_t *coarse = levels[static_cast<size_t>(k - finest)].data();
        for (int y = 0; y < height(k); y++) {
            halveRows(fine.row(2 * y), fine.row(2 * y + 1), width(k), coarse);
            coarse += width(k);
        }
    }
    return HDR_OK;
}

int LumaPyramid::levelOfSide(int side) const {
    int index = 0;
    while (std::max(width(index), height(index)) > side && std::min(width(index + 1), height(index + 1)) >= 1)
        index++;
    return index;
}

Plane<const uint8_t> LumaPyramid::level(int index) const {
    assert(index >= finest && index < finest + kMostLevels);
    return {levels[static_cast<size_t>(index - finest)].data(), width(index), height(index)};
}

void LumaPyramid::read(int levelIndex, int x, int y, int columns, int rows, uint8_t *samples) const {
    const int firstColumn = std::clamp(-x, 0, columns);
    const int endColumn = std::clamp(width(levelIndex) - x, firstColumn, columns);
    std::array<uint16_t, 1024> sums;
    for (int row = 0; row < rows; row++, samples += columns) {
        const int sourceRow = y + row;
        if (sourceRow < 0 || sourceRow >= height(levelIndex) || firstColumn == endColumn) {
            std::fill_n(samples, columns, kCrushed);
            continue;
        }
        std::fill_n(samples, firstColumn, kCrushed);
        std::fill(samples + endColumn, samples + columns, kCrushed);
        if (levelIndex >= finest)
            std::copy_n(level(levelIndex).row(sourceRow) + x + firstColumn, endColumn - firstColumn,
                        samples + firstColumn);
        else
            averageBlocks(source, tones, levelIndex, (x + firstColumn) << levelIndex, sourceRow << levelIndex,
                          endColumn - firstColumn, sums.data(), samples + firstColumn);
    }
}

} // namespace hdr
