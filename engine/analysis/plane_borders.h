// SPDX-License-Identifier: MIT
// Frames around planes and repair of their borders.
#pragma once

#include "engine/hdr_engine.h"

namespace hdr {

/// Copies a packed width x height plane into the middle of a (width + 2) x (height + 2) plane and replicates
/// its edges into the one-sample frame.
HdrStatus pad_plane_u16(const uint16_t *source, uint16_t *destination, int width, int height);
HdrStatus pad_plane_u32(const uint32_t *source, uint32_t *destination, int width, int height);

/// Replaces the frame (one sample wide at the left and top, two at the right and bottom) by its inner
/// neighbour. Width is also the pitch; width and height are at least 3.
HdrStatus replicate_border_u8(uint8_t *plane, int width, int height);

/// Sets the same frame to 255.
HdrStatus fill_border_u8(uint8_t *plane, int width, int height);

/// Extends the content of columns [x0, x1) and rows [y0, y1), which lie inside the plane, to all of it by
/// replication; an empty rectangle extends nothing.
HdrStatus extend_rect_u8(uint8_t *plane, int width, int height, int pitch, int x0, int x1, int y0, int y1);

} // namespace hdr
