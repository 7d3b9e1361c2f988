// SPDX-License-Identifier: MIT
// Bringing an exposure's reduced pictures to where the reference sees the scene.
#pragma once

#include "engine/core/offscreen.h"
#include "engine/prepare/alignment.h"

namespace hdr {

/// Reduces an input once more into `reduced` (0x604), with the blocks of each reduced pixel where the input
/// sees what the reference sees there, to the nearest pixel. Blocks outside the input take its border.
/// Returns in `valid` the rectangle of reduced pixels whose blocks lie inside. 0 or HDR_ERR_NOMEM.
HdrStatus reduceAligned(MemContext *memory, const Alignment &alignment, int input, const Offscreen &source,
                        Offscreen &reduced, Rect &valid);

/// Gives the registered luminance of an exposure the reference's where one of the two says nothing about the
/// scene but that it is at least as bright as what it shows (because it is clipped) or at most (crushed), and
/// the other is in keeping with that. A saturated colour of which a single channel is clipped must agree in
/// the others. The change is soft, over a few levels. What contradicts the reference stays as it is.
/// `working` is the exposure's own aligned picture, from which the table `tones` made the registered one; all
/// are reduced pictures (0x604) of one size. 0 or HDR_ERR_NOMEM.
HdrStatus replaceUnmeasurable(MemContext *memory, const Offscreen &reference, const Offscreen &working,
                              const uint8_t *tones, const Offscreen &registered);

} // namespace hdr
