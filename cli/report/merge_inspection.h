// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "engine/core/offscreen.h"

namespace tristop {

/// A picture of luminance.
struct GrayPicture {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> samples; ///< width * height

    uint8_t at(int x, int y) const {
        return samples[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)];
    }
};

/// A colour picture of the engine: luminance and two chroma planes of one size.
struct YuvPicture {
    GrayPicture luma;
    std::array<std::vector<uint8_t>, 2> chroma;
};

/// A feature of the reference in another exposure, in reduced pixels.
struct InspectedMatch {
    float x = 0, y = 0;           ///< where the reference has it
    float matchX = 0, matchY = 0; ///< where the exposure has it
    bool found = false;           ///< else the match says nothing
    bool follows = false;         ///< it moves as the whole exposure does
};

/// What the engine made of one photograph.
struct InspectedExposure {
    YuvPicture original; ///< reduced, as photographed
    /// Its luminance in the reference's tones, matched in the same manner before and after the alignment.
    GrayPicture lumaBefore, lumaAfter;
    GrayPicture registered;         ///< what ghost detection compares
    GrayPicture details;            ///< pieces at full size, as photographed, in the reference's tones
    GrayPicture alignedDetails;     ///< the same pieces of the scene, aligned
    hdr::Rect validRect{};          ///< of the reduced picture
    std::array<int32_t, 2> shift{}; ///< global displacement in pixels
    std::vector<int32_t> warpX;     ///< displacements of the warp nodes; empty for the reference
    std::vector<int32_t> warpY;
    /// Cells of the analysis grid: not 0 where something moved. Empty where the registered picture tells
    /// that.
    std::vector<uint8_t> movedCells;
    std::vector<InspectedMatch> matches; ///< one for each feature; empty for the reference
};

/**
 * Keeps what the engine's steps hold, for pictures that show how a merge came about. Everything is a copy.
 */
class MergeInspection {
public:
    /// Copies what is new after a step of the engine.
    void observe(const HdrContext &context, int32_t step) noexcept;

    /// Whether everything was there and there was enough memory for it.
    bool complete() const { return seenSteps == kAllSteps; }

    int darkIndex = 0, midIndex = 0, brightIndex = 0;
    int warpColumns = 0, warpRows = 0;
    std::array<InspectedExposure, 3> exposures; ///< by input

    int gridWidth = 0; ///< of the analysis grid with its frame of one cell
    /// Weights of the cells, 0 to 256.
    std::vector<int16_t> darkWeights, midWeights, brightWeights;
    std::array<std::vector<uint8_t>, 4> ghostMasks; ///< A to D: 0 or 255
    YuvPicture merged;                              ///< the reduced merged picture

private:
    static constexpr unsigned kAllSteps =
        1U << HDR_STEP_REDUCE | 1U << HDR_STEP_ALIGN | 1U << HDR_STEP_WEIGHTS | 1U << HDR_STEP_EXPOSURE_MERGE;
    unsigned seenSteps = 0;

    void copyOriginals(const HdrContext &context);
    void copyAlignment(const HdrContext &context);
    void copyWeights(const HdrContext &context);
};

} // namespace tristop
