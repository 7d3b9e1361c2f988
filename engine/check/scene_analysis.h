// SPDX-License-Identifier: MIT
// Scene analysis: class and flags of the scene, the tone curve of each exposure and the rendering's
// thresholds.
#pragma once

#include "engine/hdr_engine.h"

#include <cstdint>

namespace hdr {

inline constexpr int kQuantiles = 17;

/// What the scene analysis leaves in the context.
struct SceneAnalysis {
    int32_t sceneClass;        ///< 0 for an ordinary scene; 1 to 3 for dark ones of wide range: 3 dark in the
                               ///< bright exposure too, 2 with clipped highlights, 1 the rest
    int32_t shadowLiftFlag;    ///< 1: the brightness curve lifts shadows further
    int32_t lowHighlightFlag;  ///< 1 when the dark exposure's highest level is below 224
    int32_t flatHighlightFlag; ///< raised when the middle exposure does not reach its highlights
    int32_t darkShadowFlag;    ///< 1 when the dark exposure sits in the shadows up to a high quantile
    int32_t analysisLevel;     ///< 8
    int32_t referenceLevel;    ///< 8-bit level of the reference's highlights, or 256: none
    int32_t ghostThreshold;    ///< level above which a cell may be marked in the rendering's ghost mask
    int32_t thresholdStep;     ///< 16, or 8 in a lifted dark scene
    int32_t shadowLow;         ///< 8-bit levels between which the shadows end; both 0: no shadows
    int32_t shadowHigh;
    int32_t shadowFactor;            ///< 256 / (shadowHigh - shadowLow) where the two differ
    int32_t targetCurve[kQuantiles]; ///< 12-bit level to which the tone curves take each quantile
    int32_t highIndex;               ///< quantile of the reference that its highlights start from
    int32_t lowIndex;                ///< quantile of the reference that its shadows end with
    int32_t curveShiftT;             ///< shift of the dark part of the merge table, 2
    int32_t curveShiftU;             ///< 0
};

/// Analyses the exposures' luminance histograms (256 bins each): fills SceneAnalysis, rebuilds the three tone
/// curves (the bright exposure's is scaled by 4) and may reset the colour differences of InputCheck. `pixels`
/// is the number of reduced pixels in the picture, which the histograms' totals may fall a little short of.
void sceneAnalysis(HdrContext *context, const uint32_t *dark, const uint32_t *bright, const uint32_t *mid,
                   int pixels);

} // namespace hdr
