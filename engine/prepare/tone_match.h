// SPDX-License-Identifier: MIT
// Tone correspondence between two exposures, from their luminance histograms.
#pragma once

#include "engine/hdr_engine.h"

namespace hdr {

/// Builds a 256-entry table of source level to target level by matching deciles. `count` is the total of each
/// 256-bin histogram; only mode 0 exists; `flag` steers the bright end toward the identity. Always 0.
HdrStatus build_tone_match(uint8_t *table, const uint32_t *source, const uint32_t *target, int count,
                           int mode, int flag);

/// A smooth 256-entry table: a quartic fitted by least squares through the 20-quantiles of the two
/// histograms.
HdrStatus build_tone_match_fine(uint8_t *table, const uint32_t *source, const uint32_t *target, int count);

/// Builds the forward and inverse tables between input `index` and the reference. 0 or HDR_ERR_NOMEM. The
/// forward table (to the reference's levels) is returned through `forward`; it belongs to the context's
/// tables.
HdrStatus matchTones(MemContext *memory, HdrContext *context, int index, int count, const uint8_t **forward);

} // namespace hdr
