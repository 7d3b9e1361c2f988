// SPDX-License-Identifier: MIT
// How much of each exposure's colour goes into the merge, and where the picture has detail.
#pragma once

#include "engine/hdr_engine.h"

namespace hdr {

/// Planes of the reduced size, packed. Owned.
struct ChromaWeights {
    int16_t *chromaWeightDark;   ///< 0..256
    int16_t *chromaWeightBright; ///< 0..256
    int16_t *chromaWeightMid;    ///< 0..256
    int16_t *detailMask;         ///< strength of local detail, 0..255

    void releaseWeights(MemContext *memory); ///< the three weights only
    void release(MemContext *memory);
};

/// Fills ChromaWeights from the three working pictures. 0 or HDR_ERR_NOMEM.
HdrStatus chroma_weight_stage(MemContext *memory, HdrContext *context, Offscreen *const *workImages);

} // namespace hdr
