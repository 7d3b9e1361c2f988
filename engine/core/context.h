// SPDX-License-Identifier: MIT
// The context record: the settings and one struct for each stage, each owning what its stage makes.
#pragma once

#include "engine/analysis/chroma_weights.h"
#include "engine/analysis/exposure_merge.h"
#include "engine/analysis/exposure_weights.h"
#include "engine/analysis/first_merge.h"
#include "engine/analysis/ghost_detection.h"
#include "engine/analysis/map_padding.h"
#include "engine/check/input_check.h"
#include "engine/check/scene_analysis.h"
#include "engine/core/tables.h"
#include "engine/prepare/alignment.h"
#include "engine/prepare/preparation.h"
#include "engine/render/bands.h"
#include "engine/render/local_tone_map.h"
#include "engine/render/merge_tables.h"
#include "engine/render/render_setup.h"

/// Zero-initialised by hdrCreate. Settings persist between runs; what the stages own is released at the end
/// of each run by hdrReleaseRunBuffers, the tables by hdrDestroy.
struct HdrContext {
    // Settings
    int32_t creationMode;
    int32_t imageCount;
    int32_t alignmentMode;         ///< 3 at creation
    int32_t renderFlag;            ///< 1
    int32_t toneLength;            ///< 0..100
    int32_t brightness;            ///< -100..100
    int32_t toneSaturation;        ///< 0..100
    int32_t ghostSuppressionLevel; ///< 0..10
    int32_t ghostTuning;           ///< 0
    int32_t ghostMaskEnable;       ///< 1
    int32_t exposureMeasure;       ///< 0; at 4000 or more the merge tables use plain cell offsets
    int32_t toneOffsetA;           ///< 0
    int32_t toneOffsetB;           ///< 0
    HdrStepObserver stepObserver;  ///< null for none
    void *stepObserverData;

    // State of the run
    int32_t warningFlag;
    int32_t smoothingFlag;   ///< raised by the first merge
    int32_t progress;        ///< percent
    HdrStatus earlyExitCode; ///< 0, HDR_ERR_SHIFT or HDR_ERR_ALIGN: the exposures cannot be merged
    HdrFallback fallback;    ///< the first reason that raised earlyExitCode
    int32_t preparedOnce;
    int64_t stepMicroseconds[HDR_STEP_COUNT];

    // Stages, in the order of the run
    hdr::Tables tables;
    hdr::Preparation preparation;
    hdr::Alignment alignment;
    hdr::InputCheck check;
    hdr::SceneAnalysis scene;
    hdr::ChromaWeights chromaWeights;
    hdr::ExposureWeights weights;
    hdr::GhostDecision ghosts;
    hdr::FirstMerge firstMerge;
    hdr::ExposureMerge exposureMerge;
    hdr::RenderSetup render;
    hdr::MergeTables merge;
    hdr::LocalToneMap localToneMap;
    hdr::BandLineBuffers lineBuffers;
    hdr::BandBuffers bands;

    /// Parks a status that ends the merge after the analysis, and the reason that the run reports.
    void raiseEarlyExit(HdrStatus code, HdrFallback reason) {
        earlyExitCode = code;
        if (fallback == HDR_FALLBACK_NONE)
            fallback = reason;
    }
};

namespace hdr {

/// Releases every buffer of a run; may be called any number of times. HDR_ERR_NOMEM for a null context, else
/// 0.
HdrStatus hdrReleaseRunBuffers(MemContext *memory, HdrContext *context);

} // namespace hdr
