// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/batch/memory_budget.h"

#include <algorithm>

#include <unistd.h>

#include "app/photograph_type.h"

namespace tristop {

namespace {

constexpr int64_t kFixedBytes = int64_t{32} << 20;
constexpr int64_t kDecodedBytes = 12; // a pixel of the three decoded photographs

int64_t pixelsOf(const PlannedMerge &merge) {
    return int64_t{merge.width} * merge.height;
}

/// A pixel. Peaks of the whole command, measured at 12, 24 and 48 megapixels: 22 bytes for JPEG (baseline,
/// colour at full size), 43 to 46 for DNG (Bayer, with or without compression). Photographs whose decoding
/// takes more, 27 for progressive JPEG and 74 for RAW without a colour filter, are decoded within this one
/// after the other.
int64_t bytesOfPixel(const PlannedMerge &merge) {
    constexpr int64_t kJpegBytes = 24, kRawBytes = 50;
    const bool raw = std::ranges::any_of(merge.photographs, [](const std::string &photograph) {
        return typeBySuffix(photograph) == PhotographType::Raw;
    });
    return raw ? kRawBytes : kJpegBytes;
}

} // namespace

int64_t mergeMemory(const PlannedMerge &merge) {
    return kFixedBytes + bytesOfPixel(merge) * pixelsOf(merge);
}

int64_t decodingMemory(const PlannedMerge &merge) {
    return (bytesOfPixel(merge) - kDecodedBytes) * pixelsOf(merge);
}

int64_t usualMemoryLimit() {
    return static_cast<int64_t>(::sysconf(_SC_PHYS_PAGES)) * ::sysconf(_SC_PAGESIZE) / 2;
}

} // namespace tristop
