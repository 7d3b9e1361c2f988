// SPDX-License-Identifier: MIT
// Making, describing and copying pictures.
#pragma once

#include "engine/hdr_engine.h"

namespace hdr {

/// A rectangle of pixels; x1 and y1 are exclusive.
struct Rect {
    int32_t x0, y0, x1, y1;
};

/// Fills format, size and pitches of a record for planes packed one after the other (rows padded to 4 bytes)
/// and leaves its plane pointers alone. `planeHeights` may be null. HDR_ERR_PARAM for a null record;
/// HDR_ERR_FORMAT, with the record untouched, for an unknown format.
///
/// 0x301 to 0x304, 0x401 to 0x404: packed colour; 0x501 to 0x508: packed 4:2:2; 0x601 to 0x608: planar;
/// 0x701: grey; 0x801 to 0x803: semi-planar.
HdrStatus offscreenInit(Offscreen *record, int width, int height, uint32_t format, int planeHeights[3]);

/// Bytes of a plane from its first sample to its last one, by the record's own pitches; 0 for a plane that
/// the format does not have.
int64_t offscreenPlaneSize(const Offscreen &record, int plane);

/// Allocates a record together with one block for all its planes. *record is null unless the call succeeds,
/// but for an unknown format, where it holds nothing the caller could use either.
HdrStatus offscreenAlloc(Offscreen **record, int width, int height, uint32_t format, MemContext *memory);

/// Describes planes that belong to the caller. HDR_ERR_PARAM for a null record.
HdrStatus offscreenAttach(Offscreen *record, int width, int height, uint32_t format, uint8_t *const planes[3],
                          const int pitches[3]);

/// Frees a record of offscreenAlloc and its planes and clears the pointer; a null record is ignored.
void offscreenFree(Offscreen **record, MemContext *memory);

/// A new record with a copy of the whole picture.
HdrStatus offscreenClone(Offscreen **record, const Offscreen *source, MemContext *memory);

/// A new record with a copy of a part of the picture.
HdrStatus offscreenCloneRect(Offscreen **record, const Offscreen *source, const Rect *rectangle,
                             MemContext *memory);

/// Copies a rectangle of one picture to a rectangle of the same size in another of the same format; null
/// means the whole picture. Only the sizes of the rectangles are checked against the pictures, not their far
/// edges: what lies beyond a plane's last byte is neither read nor written.
HdrStatus offscreenCopy(Offscreen *destination, const Rect *destinationRectangle, const Offscreen *source,
                        const Rect *sourceRectangle);

/// offscreenCopy of the whole picture.
HdrStatus offscreenCopyAll(Offscreen *destination, const Offscreen *source);

/// offscreenCopy for packed 4:2:2 that keeps U and V in their places when the rectangles start on columns of
/// different parity. HDR_ERR_FORMAT outside 0x501 to 0x504.
HdrStatus offscreenCopyPacked422(Offscreen *destination, const Rect *destinationRectangle,
                                 const Offscreen *source, const Rect *sourceRectangle);

} // namespace hdr
