// SPDX-License-Identifier: MIT
// Box means of 8-bit and 16-bit planes.
#pragma once

#include "engine/hdr_engine.h"

namespace hdr {

/// Box mean over windows of side 2 radius + 1, edges replicated, in place; pitch in samples. Mode 0 leaves
/// negative samples alone; mode 1 replaces all; mode 2 sets a sample whose mean is at least 2 to 256 and
/// leaves the others. 0, or HDR_ERR_NOMEM with the plane untouched.
HdrStatus box_mean_s16(MemContext *memory, int16_t *plane, int width, int height, int pitch, int radius,
                       int mode);

/// As box_mean_s16 for bytes: modes 0 and 1 are the mean, mode 2 is twice the mean, saturated.
HdrStatus box_mean_u8(MemContext *memory, uint8_t *plane, int width, int height, int pitch, int radius,
                      int mode);

} // namespace hdr
