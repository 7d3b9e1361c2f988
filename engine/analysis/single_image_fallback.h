// SPDX-License-Identifier: MIT
#pragma once

#include "engine/hdr_engine.h"

namespace hdr {

/// Makes the run render one exposure, the one whose estimate is closest to 1 (but the reference for the dark
/// one), with a longer tone: neutral offsets, weights for that exposure only, no ghosts, no shifts or warps.
/// mergedImage becomes that exposure's reduced picture. Clears earlyExitCode. Always 0; when its allocation
/// fails it stops early, without grid weights and ghost masks and with earlyExitCode still set.
HdrStatus single_image_fallback(MemContext *memory, HdrContext *context);

} // namespace hdr
