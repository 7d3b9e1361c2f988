// SPDX-License-Identifier: MIT
#include "engine/prepare/exposure.h"

#include "engine/core/context.h"
#include "engine/core/plane.h"

#include <algorithm>

namespace hdr {

namespace {

/// Mean linear level of a picture of relative exposure 1, and the bounds of the estimate.
constexpr double kUnitLevel = 880.64;
constexpr double kLargestEstimate = 16;
constexpr double kBlackEstimate = 32;

/// Mean luminance of each cell, rounded. Cells beyond the picture repeat their neighbour; the last column
/// stays 0 when the picture fills it.
void fillLuminanceGrid(Plane<const uint8_t> luma, Plane<uint16_t> grid) {
    const int cells = grid.width - 1;
    for (int y = 0; y < luma.height; y++) {
        const uint8_t *pixels = luma.row(y);
        uint16_t *sums = grid.row(y / kReducedCellSize);
        for (int cell = 0; cell < cells; cell++, pixels += kReducedCellSize)
            sums[cell] = static_cast<uint16_t>(sums[cell] + pixels[0] + pixels[1] + pixels[2] + pixels[3]);
        if (luma.width / kReducedCellSize < grid.width && cells > 0)
            sums[cells] = sums[cells - 1];
    }
    for (int y = 0; y < grid.height; y++)
        for (uint16_t *cell = grid.row(y); cell != grid.row(y) + grid.width; cell++)
            *cell = static_cast<uint16_t>((*cell + 8) >> 4);
    if (luma.height / kReducedCellSize < grid.height && grid.height > 1)
        std::copy_n(grid.row(grid.height - 2), grid.width, grid.row(grid.height - 1));
}

} // namespace

void countSamples(const Offscreen *picture, int plane, uint32_t *counts) {
    std::fill_n(counts, kBins, 0u);
    const Plane<uint8_t> samples = planeOf(*picture, plane);
    for (int y = 0; y < samples.height; y++)
        for (const uint8_t *sample = samples.row(y); sample != samples.row(y) + samples.width; sample++)
            counts[*sample]++;
}

double estimateExposure(HdrContext *context, const Offscreen *reduced, uint32_t *histogram, int input,
                        const uint16_t *gammaExpand) {
    const Preparation &preparation = context->preparation;
    const Plane<uint16_t> grid(preparation.gridPlane(input), preparation.gridColumns, preparation.gridRows);
    std::fill_n(grid.data, static_cast<size_t>(grid.width) * static_cast<size_t>(grid.height), uint16_t{0});
    std::fill_n(histogram, kBins, 0u);
    if (reduced->u32PixelArrayFormat == HDR_FORMAT_YUV444 && reduced->i32Height > 0) {
        countSamples(reduced, 0, histogram);
        fillLuminanceGrid(planeOf(*reduced), grid);
    }

    uint64_t sum = 0;
    for (int level = 0; level < kBins; level++)
        sum += uint64_t{histogram[level]} * gammaExpand[level];
    if (sum == 0)
        return kBlackEstimate;
    const double pixels = static_cast<double>(int64_t{reduced->i32Width} * reduced->i32Height);
    return std::min(kUnitLevel / (static_cast<double>(sum) / pixels), kLargestEstimate);
}

HdrStatus orderExposures(HdrContext *context, const double *estimates, int count) {
    Preparation &preparation = context->preparation;
    const auto order = [&preparation](int dark, int mid, int bright) {
        preparation.darkIndex = dark;
        preparation.midIndex = mid;
        preparation.brightIndex = bright;
    };
    if (count == 2) {
        const int bright = estimates[0] > estimates[1] ? 1 : 0;
        order(1 - bright, 0, bright);
    } else if (count == 3) {
        // The order of equal estimates is part of the rule: no stable sort gives it.
        const double first = estimates[0];
        const double second = estimates[1];
        const double third = estimates[2];
        if (second > first) {
            if (third > second)
                order(2, 1, 0);
            else if (first >= third)
                order(1, 0, 2);
            else
                order(1, 2, 0);
        } else if (third > first) {
            order(2, 0, 1);
        } else if (second > third) {
            order(0, 1, 2);
        } else {
            order(0, 2, 1);
        }
    } else {
        order(0, 0, 0);
    }
    return HDR_OK;
}

} // namespace hdr
