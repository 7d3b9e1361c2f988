// SPDX-License-Identifier: MIT
// Per-input colour statistics and the grids that the analysis stages read, brought into register.
#pragma once

#include "engine/hdr_engine.h"

namespace hdr {

/// Runs inputStatistics, shifts and frames the grids and allocates the cell weight maps. 0 or HDR_ERR_NOMEM.
HdrStatus prepareGridStatistics(MemContext *memory, HdrContext *context);

/// Colour differences between the exposures from their chroma histograms, then the scene analysis.
void inputStatistics(HdrContext *context);

/// Moves a packed grid (row stride `columns`) by (dx, dy) full-resolution pixels, bilinearly; cells that the
/// move does not reach keep their value. `scratch` holds columns x rows entries.
void shiftGridPlane(uint16_t *plane, int columns, int rows, int dx, int dy, uint16_t *scratch);

} // namespace hdr
