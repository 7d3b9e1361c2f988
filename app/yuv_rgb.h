// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>

#include "app/histogram_data.h"
#include "app/pixels.h"
#include "engine/hdr_engine.h"

namespace tristop {

/**
 * Conversions between engine pictures, BGR and BGRX buffers and images, and the storage of the
 * application's engine pictures. Stateless; every operation may run on any thread.
 */
class CBYUVRGB {
public:
    CBYUVRGB() = delete;

    /**
     * Sets the pitches of a record whose format, width and height are set, and allocates its pixels, as one
     * block that plane 0 points at: 0x501 (pitch 2 x width), 0x601 and 0x802 (pitch width, chroma half).
     * Plane 0 is null when the size is above what 32-bit arithmetic holds or there is not enough
     * memory. Records of any other format are left alone.
     */
    static void allocOffscreen(Offscreen *offscreen);

    /// Frees what allocOffscreen allocated; the record keeps its now stale values. Accepts null and records
    /// without pixels.
    static void releaseOffscreen(Offscreen *offscreen);

    /**
     * Copies size, pitches and pixels of a 0x501 or 0x802 record into a record with its own storage for
     * them; the destination's format is not written. Any other format, 0x601
     * included, and a record without pixels copies nothing.
     */
    static void copyOffscreen(const Offscreen &source, Offscreen &dstOffscreen);

    /**
     * The picture as BGRX, filler 255, rows 4 x width bytes apart; null when there is not enough memory.
     * Converts 0x501, 0x601 and 0x802; for any other format the pixels are undefined.
     */
    static PixelBuffer bgraData(const Offscreen *offscreen);

    /**
     * Turns a BGR picture with rows `linebytes` apart into an image, filler 255, and adds its pixels to
     * `histogramData`. None, with the histogram untouched, when there is not enough memory.
     */
    static std::optional<BgrxImage> bgr2image(const uint8_t *bgr, int64_t width, int64_t height,
                                              int64_t linebytes, IIHistogramData &histogramData);

    /// Wraps a BGRX buffer, such as bgraData gives, without copying it; none for a null buffer.
    static std::optional<BgrxImage> image(PixelBuffer bgrx, int32_t width, int32_t height);
};

} // namespace tristop
