// SPDX-License-Identifier: MIT
// Tone correspondence between two aligned exposures, from what they show at the same places.
#pragma once

#include "engine/core/offscreen.h"
#include "engine/core/plane.h"

#include <array>
#include <cstdint>

namespace hdr {

/// Luminance from which on an exposure has no information, being clipped, and up to which it has none, being
/// crushed. Studio-range luminance ends at 235 and 16, and a reduced pixel averages nine samples, of which a
/// few may be beyond the end.
inline constexpr int kFullyClipped = 226, kFullyCrushed = 17;

/// Corrects a table of 256 entries that maps the levels of one exposure to those of the reference and was
/// made from their separate histograms, which is far off where few pixels have a level. Counts which levels
/// meet in the two aligned pictures inside `valid` (the comparagram, Mann 2000) and moves the entries that
/// are off by more than a few levels towards the ones that meet most. Only levels of which each is the
/// other's counterpart count: something that moved in front of a plain ground meets that ground's level, but
/// the ground meets itself; levels beyond those that the reference can show meet its last one. `tones`
/// receives the corrected table, which never falls. 0, or HDR_ERR_NOMEM with `tones` a copy of
/// `matched`.
HdrStatus correctTones(MemContext *memory, Plane<const uint8_t> reference, Plane<const uint8_t> own,
                       const Rect &valid, const uint8_t *matched, std::array<uint8_t, 256> &tones);

} // namespace hdr
