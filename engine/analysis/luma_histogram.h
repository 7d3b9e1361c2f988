// SPDX-License-Identifier: MIT
#pragma once

#include "engine/hdr_engine.h"

namespace hdr {

/// Counts plane 0 of a picture into 256 bins (of packed 0x501 the luminance bytes only); a format without a
/// luminance plane leaves all counts 0. 0, or HDR_ERR_NOMEM.
HdrStatus luma_histogram(MemContext *memory, const Offscreen *picture, uint32_t *counts);

/// The levels beyond which at most 1/4096 of the picture's pixels lie; 0 where no bin passes the threshold.
HdrStatus histogram_clip_points(const Offscreen *picture, const uint32_t *counts, int *high, int *low);

} // namespace hdr
