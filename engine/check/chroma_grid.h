// SPDX-License-Identifier: MIT
#pragma once

#include "engine/hdr_engine.h"

namespace hdr {

/// Means of both chroma channels of input `input` over cells of 32 x 32 pixels, 16 samples a cell, into two
/// grids of gridColumns x gridRows packed entries. Formats without a rule leave zeros.
void chromaGrid(HdrContext *context, const Offscreen *inputs, int input, uint16_t *first, uint16_t *second);

} // namespace hdr
