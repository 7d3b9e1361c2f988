// SPDX-License-Identifier: MIT
// Input preparation: reduced working pictures, exposure estimates and order, tone matching and alignment.
#pragma once

#include "engine/core/offscreen.h"

#include <cstddef>
#include <cstdint>

namespace hdr {

/// Source pixels across one cell of the analysis grid, and across one reduced pixel.
inline constexpr int kCellSize = 32;
inline constexpr int kReduction = 8;
/// Reduced pixels across one cell.
inline constexpr int kReducedCellSize = kCellSize / kReduction;
/// Planes of gridStats.
inline constexpr int kGridPlaneCount = 12;
/// Bins of one histogram; a statistics block holds three (luminance, U, V).
inline constexpr int kBins = 256;

/// Planes of gridStats beside the three inputs' luminance grids (planes 0 to 2, by input).
enum GridPlane {
    kGridMidU = 3,      ///< the reference's chroma, first channel
    kGridMidV = 4,      ///< the reference's chroma, second channel
    kGridDarkLevel = 5, ///< the dark exposure's framed cell luminance; later its shadow offsets
    kGridMidLevel = 6,  ///< the reference's framed cell luminance
    kGridHighlight = 7, ///< a copy of kGridMidLevel; later the reference's highlight offsets
    kGridDarkU = 8,     ///< the dark exposure's chroma; later its difference from the reference's
    kGridDarkV = 9,
    kGridScratch = 11
};

/// What preparation leaves in the context. Owns its buffers but for `inputs`.
struct Preparation {
    int32_t sourceWidth; ///< size of input 0, in pixels
    int32_t sourceHeight;
    int32_t sourcePitch;      ///< its plane-0 pitch, in bytes
    int32_t gridColumns;      ///< gw: cells across, ceil(width / 32)
    int32_t gridRows;         ///< gh
    int32_t gridWidth;        ///< gw + 2: cells across with the one-cell frame
    int32_t gridHeight;       ///< gh + 2
    int32_t tuning[7];        ///< 256, 128, 127, 8, 12, 16, 8
    uint16_t *gridStats;      ///< [kGridPlaneCount][gridWidth * gridHeight]; see GridPlane
    uint32_t *statistics[3];  ///< per input [3][256]: counts of the reduced picture's Y, U and V
    uint16_t *toneCurve[3];   ///< per input [4096]: 12-bit tone curve, the identity until the scene analysis
    Offscreen *workImages[3]; ///< reduced pictures, 0x604, 2 (width / 16) x 2 (height / 16)
    Offscreen *registeredImages[3]; ///< the same, tone-matched and aligned to the reference
    Rect validRects[3];             ///< per input: the reduced pixels valid after its alignment
    Offscreen *mergedImage;         ///< the reduced merged picture, 0x604
    Offscreen *toneImage;           ///< the reference re-toned as the other exposures see it, 0x604
    const Offscreen *inputs;        ///< the caller's input array
    double exposureEstimate[3];     ///< relative exposure of each input, larger for darker ones, up to 32
    uint32_t exposureGainQ10[3];    ///< exposureEstimate in units of 1/1024, rounded
    int32_t darkIndex;              ///< input of the largest estimate
    int32_t brightIndex;            ///< input of the smallest estimate
    int32_t midIndex;               ///< the remaining input: the reference

    size_t gridPlaneSize() const { return static_cast<size_t>(gridWidth) * static_cast<size_t>(gridHeight); }
    uint16_t *gridPlane(int index) const { return gridStats + static_cast<size_t>(index) * gridPlaneSize(); }
    uint32_t *histogram(int input, int channel) const { return statistics[input] + channel * kBins; }
    void release(MemContext *memory);
};

/// Runs the whole preparation for `count` inputs of one size. Progress is reported with null user data. A
/// status; what was allocated stays in the context until the run's buffers are released.
HdrStatus hdrPrepareInputs(MemContext *memory, HdrContext *context, const Offscreen *inputs, int count,
                           ProgressCallback callback);

/// Sizes the grids and allocates the buffers of Preparation for pictures like `first`; those of an earlier
/// run have been released. 0 or HDR_ERR_NOMEM.
HdrStatus prepareAllocate(MemContext *memory, HdrContext *context, const Offscreen *first);

} // namespace hdr
