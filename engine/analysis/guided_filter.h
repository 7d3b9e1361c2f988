// SPDX-License-Identifier: MIT
// Edge-aware smoothing: the guided filter of He, Sun and Tang (Guided Image Filtering, ECCV 2010).
#pragma once

#include "engine/core/offscreen.h"

namespace hdr {

/// Smooths the luminance plane of `target` along the edges of `guide`'s luminance into `output`'s, which may
/// be the target but not the guide; all three have one size. Windows have the side 2 radius + 1 and see the
/// picture's edges replicated. Only samples inside `rectangle` are written (null: all); it does not limit
/// what the windows see. epsilon, at least 1, is truncated to an integer: guide variance (in squared levels)
/// well below it counts as noise. Runs on four threads. 0, or HDR_ERR_NOMEM with the output untouched.
HdrStatus guided_filter_u8(MemContext *memory, const Offscreen *guide, const Offscreen *target, int radius,
                           const Rect *rectangle, Offscreen *output, double epsilon);

/// The same for 16-bit planes of the guide's size, packed, whose regular values are 0 to 510; epsilon is not
/// truncated. Mode 1 fits floating-point coefficients, 0 integer ones (with a fixed epsilon of 5).
HdrStatus guided_filter_s16(MemContext *memory, const Offscreen *guide, const int16_t *target, int radius,
                            const Rect *rectangle, int16_t *output, int mode, double epsilon);

} // namespace hdr
