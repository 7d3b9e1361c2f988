// SPDX-License-Identifier: MIT
// The first merged picture, and how far each exposure's luminance is from it.
#pragma once

#include "engine/hdr_engine.h"

namespace hdr {

/// Indices of correctionMaps.
enum CorrectionMap {
    kLumaOffsetMid = 0, ///< luminance offsets, biased by 256
    kLumaOffsetDark = 1,
    kLumaOffsetBright = 2,
    kMidOffsetU = 3, ///< chroma offsets, centred on 0
    kDarkOffsetU = 4,
    kBrightOffsetU = 5,
    kMidOffsetV = 6,
    kDarkOffsetV = 7,
    kBrightOffsetV = 8,
    kCorrectionMapCount = 9
};

struct FirstMerge {
    int32_t mapWidth; ///< the reduced size
    int32_t mapHeight;
    /// Nine maps with room for (mapWidth + 2) x (mapHeight + 2) samples, packed mapWidth x mapHeight until
    /// band_buffer_stage frames them. Three allocations of three maps, owned through maps 0, 3 and 6.
    int16_t *correctionMaps[kCorrectionMapCount];
    int32_t darkFraction; ///< share of merged pixels of luminance 1 to 31, in 1/1024

    int16_t *lumaOffsetMid() const { return correctionMaps[kLumaOffsetMid]; }
    int16_t *lumaOffsetDark() const { return correctionMaps[kLumaOffsetDark]; }
    int16_t *lumaOffsetBright() const { return correctionMaps[kLumaOffsetBright]; }
    void release(MemContext *memory);
};

/// Merges the reduced exposures, replaces ghosts, stretches the tones and fills the luminance offset maps;
/// raises smoothingFlag. 0 or HDR_ERR_NOMEM.
HdrStatus first_merge_stage(MemContext *memory, HdrContext *context, Offscreen *const *workImages);

} // namespace hdr
