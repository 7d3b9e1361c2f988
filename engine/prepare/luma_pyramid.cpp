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

/// Adds a row's samples to `sums`.
template <int Step>
void addRow(const uint8_t *row, int count, uint16_t *sums) {
    for (int x = 0; x < count; x++)
        sums[x] = static_cast<uint16_t>(sums[x] + row[Step * x]);
}

/// Means of `size` x `size` pixels in comparison tones, for `count` blocks of the picture from pixel (x, y)
/// on. `sums` has room for a row of the blocks' pixels.
void averageBlocks(const Offscreen &picture, const ComparisonTones &tones, int level, int x, int y, int count,
                   uint16_t *sums, uint8_t *means) {
    const int size = 1 << level;
    const int pixels = count << level;
    const int step = lumaStep(picture);
    if (level == 0) {
        const uint8_t *samples = lumaRow(picture, y) + static_cast<ptrdiff_t>(x) * step;
        for (int i = 0; i < count; i++)
            means[i] = tones[4 * static_cast<size_t>(samples[i * step])];
        return;
    }
    std::fill_n(sums, pixels, uint16_t{0});
    for (int row = y; row < y + size; row++) {
        const uint8_t *samples = lumaRow(picture, row) + static_cast<ptrdiff_t>(x) * step;
        if (step == 2)
            addRow<2>(samples, pixels, sums);
        else
            addRow<1>(samples, pixels, sums);
    }
    for (int i = 0; i < count; i++) {
        uint32_t sum = 0;
        for (int k = 0; k < size; k++)
            sum += sums[(i << level) + k];
        means[i] = tones[(4 * sum) >> (2 * level)];
    }
}

/// The mean of four samples; crushed or clipped when most of them are.
uint8_t reduceFour(const uint8_t *upper, const uint8_t *lower) {
    const auto countOf = [&](uint8_t level) {
        return (upper[0] == level) + (upper[1] == level) + (lower[0] == level) + (lower[1] == level);
    };
    const int mean = (upper[0] + upper[1] + lower[0] + lower[1] + 2) >> 2;
    if (countOf(kCrushed) >= 3)
        return kCrushed;
    if (countOf(kClipped) >= 3)
        return kClipped;
    return static_cast<uint8_t>(std::clamp<int>(mean, kCrushed + 1, kClipped - 1));
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
        buffer =
            Buffer<uint8_t>::zeroed(memory, static_cast<size_t>(width(k)) * static_cast<size_t>(height(k)));
        if (!buffer)
            return HDR_ERR_NOMEM;
    }

    const size_t rowPixels = static_cast<size_t>(width(finest)) << finest;
    Buffer<uint16_t> sums(memory, 4 * rowPixels);
    if (!sums)
        return HDR_ERR_NOMEM;
    struct Stripe {
        int firstRow, endRow;
        uint16_t *sums;
    };
    std::array<Stripe, 4> stripes;
    for (int i = 0; i < 4; i++)
        stripes[static_cast<size_t>(i)] = {height(finest) * i / 4, height(finest) * (i + 1) / 4,
                                           sums.data() + static_cast<size_t>(i) * rowPixels};
    runOnFourWorkers(
        stripes, [this](Stripe &stripe) { buildFinestRows(stripe.firstRow, stripe.endRow, stripe.sums); });

    for (int k = finest + 1; k <= last; k++) {
        const Plane<const uint8_t> fine = level(k - 1);
        uint8_t *coarse = levels[static_cast<size_t>(k - finest)].data();
        for (int y = 0; y < height(k); y++) {
            const uint8_t *upper = fine.row(2 * y);
            const uint8_t *lower = fine.row(2 * y + 1);
            for (int x = 0; x < width(k); x++)
                *coarse++ = reduceFour(upper + 2 * x, lower + 2 * x);
        }
    }
    return HDR_OK;
}

void LumaPyramid::buildFinestRows(int firstRow, int endRow, uint16_t *sums) {
    for (int y = firstRow; y < endRow; y++)
        averageBlocks(source, tones, finest, 0, y << finest, width(finest), sums,
                      levels[0].data() + static_cast<ptrdiff_t>(y) * width(finest));
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
