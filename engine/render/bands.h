// SPDX-License-Identifier: MIT
// Banded rendering: every output pixel, in four bands of rows on four threads.
#pragma once

#include "engine/hdr_engine.h"
#include "engine/render/warp_resampling.h"

namespace hdr {

/// A band of rows of the working rectangle.
struct HdrBand {
    uint32_t index; ///< 0 to 3
    uint32_t firstRow;
    uint32_t endRow;        ///< exclusive
    uint32_t relativeFirst; ///< first row relative to the top of the working rectangle
};

/// What a band's thread is given.
struct HdrBandTask {
    MemContext *memory;
    HdrContext *context;
    const Offscreen *inputs;
    const Offscreen *spare;
    uint32_t imageCount;
    Offscreen *outputs;
    uint32_t outputIndex;
    void *reserved;
    ProgressCallback callback;
    void *userData;
    uint32_t bandIndex;
    const HdrBand *band;
};

/// What the bands work in, besides the context that they share read-only.
struct BandBuffers {
    void *storage[4];              ///< a band's row buffers; BandRows divides them. Owned.
    ReferenceEdges referenceEdges; ///< shared by the bands

    void release(MemContext *memory);
};

/// Allocates the buffers of all four bands and keeps the rows of the reference that are needed after they
/// have been rendered over. 0 or HDR_ERR_NOMEM.
HdrStatus allocateBandBuffers(MemContext *memory, HdrContext *context);

/// Renders one band over the target of the merge tables. Bands write nothing but their own rows and buffers,
/// so they may run at the same time; the first one reports progress (75 points over the band, every 32 rows).
/// HDR_OK; HDR_ERR_PARAM when smoothingFlag is not raised; HDR_ERR_FORMAT for pictures other than
/// HDR_FORMAT_YUY2; HDR_ERR_NOMEM when an earlier stage's result is missing; HDR_CANCELLED.
HdrStatus render_band(const HdrBand *band, HdrContext *context, const Offscreen *inputs,
                      ProgressCallback callback, void *userData);

/// A band thread's entry: render_band with the task's arguments.
HdrStatus hdrBandWorker(const HdrBandTask &task);

} // namespace hdr
