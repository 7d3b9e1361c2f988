// SPDX-License-Identifier: MIT
// Frames around the correction maps and line buffers for the four render bands.
#pragma once

#include "engine/hdr_engine.h"

namespace hdr {

struct BandLineBuffers {
    /// [line][band]: width + 64 samples each, zeroed. One allocation a band, owned through line 0.
    int16_t *bandLineBuffers[9][4];

    void release(MemContext *memory);
};

/// Frames the nine correction maps in place and allocates the line buffers. 0 or HDR_ERR_NOMEM.
HdrStatus band_buffer_stage(MemContext *memory, HdrContext *context);

} // namespace hdr
