// SPDX-License-Identifier: GPL-3.0-or-later
// A stand-in for the engine that fails on demand and tells how it was called.
#pragma once

#include <cstdint>

#include "engine/hdr_engine.h"

namespace tristop::testing {

struct FaultEngine {
    // What the next run does. The command's tests set the first five through the environment.
    HdrStatus status = HDR_OK;                ///< TRISTOP_FAULT_STATUS
    HdrFallback fallback = HDR_FALLBACK_NONE; ///< TRISTOP_FAULT_FALLBACK
    bool throws = false;                      ///< TRISTOP_FAULT_THROWS: runs out of memory
    int signalAtSync = 0;                     ///< TRISTOP_FAULT_SIGNAL: comes when a file is brought to disk
    bool interrupts = false;                  ///< TRISTOP_FAULT_INTERRUPT: SIGINT comes during the run
    HdrStatus createStatus = HDR_OK;          ///< a context is made nevertheless

    // What was seen.
    int contexts = 0; ///< created and not yet destroyed
    int runs = 0;
    int32_t ghostLevel = -1;
    int32_t imageCount = 0;
    int32_t outputIndex = -1;
    HdrParams parameters{};
    int64_t callbackResult = -1;
};

FaultEngine &faultEngine();

/// Luminance of the picture that a run "merges": BGRX 128 in every channel.
constexpr uint8_t kMergedLuma = 126;

} // namespace tristop::testing
