// SPDX-License-Identifier: MIT
// The warp grids that the rendering follows: a displacement field in whole pixels.
#pragma once

#include "engine/prepare/alignment.h"
#include "engine/prepare/motion_model.h"
#include "engine/prepare/warp_field.h"

namespace hdr {

/// Sets the input's global shift (the field at the picture's centre, rounded half away from zero, less whole
/// cells where it exceeds kLargestShift) and its grids: whole numbers relative to the shift whose
/// interpolation follows the field as nearly as it can, which is not always their nearest ones: between two
/// whole numbers neighbouring nodes alternate.
void roundWarpField(const WarpField &field, Alignment &alignment, int input);

/// Displacement of an input at a full-resolution position, as the rendering follows it.
Vector warpDisplacement(const Alignment &alignment, int input, Vector position);

/// Whether an input's shift and grids are zero everywhere.
bool isUnmoved(const Alignment &alignment, int input);

} // namespace hdr
