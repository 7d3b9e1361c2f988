// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/batch/memory_budget.h"

#include <algorithm>

#include <unistd.h>

#include "app/photograph_type.h"

namespace tristop {

int64_t mergeMemory(const PlannedMerge &merge) {
    // Measured peaks a pixel, with a margin: three decoded photographs; RAW decoders hold 16-bit data
    // besides.
    constexpr int64_t kJpegBytes = 24, kRawBytes = 64, kFixedBytes = int64_t{32} << 20;
    const bool raw = std::ranges::any_of(merge.photographs, [](const std::string &photograph) {
        return typeBySuffix(photograph) == PhotographType::Raw;
    });
    return kFixedBytes + int64_t{merge.width} * merge.height * (raw ? kRawBytes : kJpegBytes);
}

int64_t usualMemoryLimit() {
    return static_cast<int64_t>(::sysconf(_SC_PHYS_PAGES)) * ::sysconf(_SC_PAGESIZE) / 2;
}

} // namespace tristop
