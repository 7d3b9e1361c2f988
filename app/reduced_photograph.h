// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "app/image_source.h"
#include "app/pixels.h"

namespace tristop {

/**
 * A small upright copy of an opened photograph whose longer side is at most `longestSide` pixels, for
 * thumbnails; a photograph that is no larger keeps its size. Without pixels when the photograph is not open
 * or there is not enough memory.
 */
BgrxImage reducedUpright(const CBImageSource &photograph, int32_t longestSide);

} // namespace tristop
