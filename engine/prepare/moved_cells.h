// SPDX-License-Identifier: MIT
// Finding the cells in which an aligned exposure shows something else than the reference.
#pragma once

#include "engine/core/offscreen.h"
#include "engine/core/plane.h"

namespace hdr {

/// Sets the cells of the framed analysis grid `moved` in which things moved between the reference and another
/// exposure; the others become 0. A cell is 4 x 4 reduced pixels.
///
/// `registered` is the exposure in the reference's tones, `own` before the tones were matched by the table
/// `tones`; only pixels inside `valid` count. A change must leave the range of the reference's levels around
/// it by more than a threshold that each ghost suppression `level` (0..10) lowers by 1, in a patch of several
/// pixels; weaker differences count beside it. Errors of a pixel's alignment thus do not. Higher levels never
/// set fewer cells. HDR_ERR_NOMEM or 0.
HdrStatus findMovedCells(MemContext *memory, Plane<const uint8_t> reference, Plane<const uint8_t> registered,
                         Plane<const uint8_t> own, const uint8_t *tones, const Rect &valid, int level,
                         Plane<uint8_t> moved);

} // namespace hdr
