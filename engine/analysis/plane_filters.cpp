// SPDX-License-Identifier: MIT
#include "engine/analysis/plane_filters.h"

#include "engine/core/buffer.h"
#include "engine/core/plane.h"

#include <algorithm>
#include <cstdint>

namespace hdr {
namespace {

/// 65536 / (side * side), rounded to nearest.
constexpr uint32_t reciprocalOfWindow(int side) {
    const uint32_t area = static_cast<uint32_t>(side) * static_cast<uint32_t>(side);
    return (area + 131072) / (2 * area);
}

/// Fills the summed-area table of the plane with its edges replicated `radius` samples outward. Row j of the
/// table, entry i, is the sum (modulo 2^32) of all extended samples above row j and left of column i.
template <typename Sample>
void buildSummedAreaTable(Plane<const Sample> plane, int radius, Plane<uint32_t> table) {
    std::fill_n(table.row(0), table.width, 0u);
    for (int j = 1; j < table.height; j++) {
        const Sample *samples = plane.row(std::clamp(j - 1 - radius, 0, plane.height - 1));
        const uint32_t *above = table.row(j - 1);
        uint32_t *sums = table.row(j);
        uint32_t rowSum = 0;
        *sums++ = 0;
        above++;
        const auto append = [&](Sample sample) {
            rowSum += static_cast<uint32_t>(sample);
            *sums++ = *above++ + rowSum;
        };
        for (int i = 0; i < radius; i++)
            append(samples[0]);
        for (int x = 0; x < plane.width; x++)
            append(samples[x]);
        for (int i = 0; i < radius; i++)
            append(samples[plane.width - 1]);
    }
}

/// Replaces every sample by store(sample, mean), where mean is its window's mean in units of 1/65536 with the
/// rounding half already added.
template <typename Sample, typename Store>
void replaceByMean(Plane<Sample> plane, int radius, Plane<const uint32_t> table, Store store) {
    const int side = 2 * radius + 1;
    const uint32_t reciprocal = reciprocalOfWindow(side);
    for (int y = 0; y < plane.height; y++) {
        const uint32_t *top = table.row(y);
        const uint32_t *bottom = table.row(y + side);
        Sample *samples = plane.row(y);
        for (int x = 0; x < plane.width; x++) {
            const uint32_t sum = bottom[x + side] - top[x + side] - bottom[x] + top[x];
            samples[x] = store(samples[x], sum * reciprocal + 32768u);
        }
    }
}

/// Runs `filter` on the plane and its summed-area table. 0, or HDR_ERR_NOMEM with the plane untouched.
template <typename Sample, typename Filter>
HdrStatus withSummedAreaTable(MemContext *memory, Plane<Sample> plane, int radius, Filter filter) {
    if (plane.width <= 0 || plane.height <= 0)
        return HDR_OK;
    const int columns = plane.width + 2 * radius + 1;
    const int rows = plane.height + 2 * radius + 1;
    Buffer<uint32_t> sums(memory, static_cast<size_t>(columns) * static_cast<size_t>(rows));
    if (!sums)
        return HDR_ERR_NOMEM;
    const Plane<uint32_t> table(sums.data(), columns, rows);
    buildSummedAreaTable<Sample>(plane, radius, table);
    filter(table);
    return HDR_OK;
}

} // namespace

HdrStatus box_mean_s16(MemContext *memory, int16_t *plane, int width, int height, int pitch, int radius,
                       int mode) {
    const Plane<int16_t> samples(plane, width, height, pitch);
    return withSummedAreaTable(memory, samples, radius, [&](Plane<const uint32_t> table) {
        switch (mode) {
        case 0:
            replaceByMean(samples, radius, table, [](int16_t sample, uint32_t mean) {
                return sample >= 0 ? static_cast<int16_t>(mean >> 16) : sample;
            });
            break;
        case 2:
            replaceByMean(samples, radius, table, [](int16_t sample, uint32_t mean) {
                return (static_cast<int32_t>(mean) >> 16) >= 2 ? static_cast<int16_t>(256) : sample;
            });
            break;
        default:
            replaceByMean(samples, radius, table,
                          [](int16_t, uint32_t mean) { return static_cast<int16_t>(mean >> 16); });
        }
    });
}

HdrStatus box_mean_u8(MemContext *memory, uint8_t *plane, int width, int height, int pitch, int radius,
                      int mode) {
    const Plane<uint8_t> samples(plane, width, height, pitch);
    return withSummedAreaTable(memory, samples, radius, [&](Plane<const uint32_t> table) {
        if (mode == 2)
            replaceByMean(samples, radius, table, [](uint8_t, uint32_t mean) {
                return static_cast<uint8_t>(std::min(mean >> 15, 255u));
            });
        else
            replaceByMean(samples, radius, table,
                          [](uint8_t, uint32_t mean) { return static_cast<uint8_t>(mean >> 16); });
    });
}

} // namespace hdr
