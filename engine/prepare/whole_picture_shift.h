// SPDX-License-Identifier: MIT
// The shift between two exposures, found from the whole picture without any first guess.
#pragma once

#include "engine/prepare/luma_pyramid.h"
#include "engine/prepare/motion_model.h"

namespace hdr {

struct WholePictureShift {
    Vector displacement;    ///< in full-resolution pixels, good to about a pixel of a 400-pixel picture
    double correlation = 0; ///< of the pictures' local contrast at that displacement, up to 1
};

/// Searches displacements of up to a fifth of the picture's longer side (and a quarter of the shorter one
/// along it) for the one at which the two pictures' local contrast correlates best, from a coarse resolution
/// to a finer one. Local contrast, luminance less its local mean over its local deviation, survives a change
/// of exposure. Of similar candidates the smaller displacement wins: a repeating pattern is taken to have
/// moved little. 0 or HDR_ERR_NOMEM.
HdrStatus findWholePictureShift(MemContext *memory, const LumaPyramid &reference, const LumaPyramid &other,
                                WholePictureShift &shift);

} // namespace hdr
