// SPDX-License-Identifier: MIT
// The tables that tone length, brightness and tone saturation turn into.
#pragma once

#include "engine/hdr_engine.h"

namespace hdr {

/// Builds contrast, brightness, S-curve and detail-gain tables, the local tone map and the colour maps, and
/// releases the reduced pictures. 0 or HDR_ERR_NOMEM.
HdrStatus build_render_tables(MemContext *memory, HdrContext *context, const Offscreen *output);

/// Rebuilds sCurve8 for a saturation strength (0 to 100; larger ones are accepted).
void build_scurve(HdrContext *context, int strength);

/// Builds the brightness curve in contrastCurve12 and composes contrastCurve8 with it.
void build_brightness_curve(HdrContext *context, int brightness, int low, int high, double gamma);

/// Fills a table of 65536 gains in units of 1/1024 for a detail strength.
void build_detail_gain(uint16_t *table, int strength, int base);

/// Rebuilds the context's detail-gain table. HDR_ERR_NOMEM when it has none.
HdrStatus set_detail_strength(MemContext *memory, HdrContext *context, int strength);

} // namespace hdr
