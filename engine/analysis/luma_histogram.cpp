// SPDX-License-Identifier: MIT
#include "engine/analysis/luma_histogram.h"

#include "engine/core/buffer.h"

#include <algorithm>
#include <cstdint>

namespace hdr {
namespace {

constexpr int kBinCount = 256;

/// Bytes from one luminance sample to the next in plane 0; 0 when the format has no luminance there.
int lumaStep(uint32_t format) {
    switch (format) {
    case HDR_FORMAT_YUY2:
        return 2;
    case HDR_FORMAT_I420:
    case HDR_FORMAT_I422:
    case HDR_FORMAT_YUV444:
    case HDR_FORMAT_GRAY:
    case HDR_FORMAT_NV12:
    case HDR_FORMAT_NV21:
        return 1;
    default:
        return 0;
    }
}

} // namespace

HdrStatus luma_histogram(MemContext *memory, const Offscreen *picture, uint32_t *counts) {
    auto bins = Buffer<uint32_t>::zeroed(memory, kBinCount);
    if (!bins)
        return HDR_ERR_NOMEM;
    if (const int step = lumaStep(picture->u32PixelArrayFormat)) {
        for (int y = 0; y < picture->i32Height; y++) {
            const uint8_t *row = picture->ppu8Plane[0] + static_cast<ptrdiff_t>(y) * picture->pi32Pitch[0];
            for (int x = 0; x < picture->i32Width; x++)
                bins[row[x * step]]++;
        }
    }
    std::copy(bins.begin(), bins.end(), counts);
    return HDR_OK;
}

HdrStatus histogram_clip_points(const Offscreen *picture, const uint32_t *counts, int *high, int *low) {
    const int64_t threshold = static_cast<int64_t>(picture->i32Width) * picture->i32Height / 4096;
    const auto firstBeyond = [&](int start, int step) {
        int64_t sum = 0;
        for (int bin = start; bin >= 0 && bin < kBinCount; bin += step) {
            sum += counts[bin];
            if (sum > threshold)
                return bin;
        }
        return 0;
    };
    *low = firstBeyond(0, 1);
    *high = firstBeyond(kBinCount - 1, -1);
    return HDR_OK;
}

} // namespace hdr
