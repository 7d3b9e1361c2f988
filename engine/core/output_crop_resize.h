// SPDX-License-Identifier: MIT
// The last step of a run: cutting away what is not valid in every exposure and filling the picture again.
#pragma once

#include "engine/core/offscreen.h"

namespace hdr {

/// Crops the source to the rectangle, stretches it bilinearly (chroma: nearest) to the destination's size and
/// writes the destination, on four threads. The rectangle is clamped to the picture and trimmed to its aspect
/// ratio in place; one without pixels counts as the whole picture, and the whole picture is a plain copy.
/// Handles 0x501, 0x601 and 0x801 to 0x803; source and destination have one size and must not overlap.
/// 0, or HDR_ERR_NOMEM.
HdrStatus outputCropResize(MemContext *memory, const Offscreen *source, Offscreen *destination,
                           Rect *rectangle);

} // namespace hdr
