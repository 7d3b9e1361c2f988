// SPDX-License-Identifier: MIT
// How bright each input is, and which is the dark, the middle and the bright one.
#pragma once

#include "engine/hdr_engine.h"

namespace hdr {

/// Counts the samples of one plane of a planar 4:4:4 picture into 256 bins.
void countSamples(const Offscreen *picture, int plane, uint32_t *counts);

/// Counts the luminance histogram (256 bins) and the luminance grid plane of an input's reduced picture
/// (packed, row stride gridColumns, in plane `input` of gridStats) and returns the relative exposure: 880.64
/// divided by the mean linear level, at most 16, or 32 for a black picture.
double estimateExposure(HdrContext *context, const Offscreen *reduced, uint32_t *histogram, int input,
                        const uint16_t *gammaExpand);

/// Sets darkIndex, brightIndex and midIndex from `count` estimates (a larger one means a darker picture).
HdrStatus orderExposures(HdrContext *context, const double *estimates, int count);

} // namespace hdr
