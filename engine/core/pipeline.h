// SPDX-License-Identifier: MIT
// The pipeline driver: the stages of a run in order.
#pragma once

#include "engine/hdr_engine.h"
#include "engine/render/bands.h"

#include <array>

namespace hdr {

/// Runs input checking, the analysis stages, the render set-up, the four bands and the output crop on
/// prepared inputs, reporting progress. `spare` is an empty record for the band tasks; `unused` and
/// `reserved` are not read. A status; the run's buffers are released on success.
HdrStatus hdrRunPipeline(MemContext *memory, HdrContext *context, Offscreen *inputs, const Offscreen *spare,
                         int imageCount, Offscreen *outputs, int outputIndex, void *unused, void *reserved,
                         ProgressCallback callback, void *userData, int toneLength, int brightness,
                         int toneSaturation);

/// Four bands of about a quarter of the rows [top, top + height), inner edges on multiples of 8 rows from the
/// top.
std::array<HdrBand, 4> splitBands(int top, int height);

} // namespace hdr
