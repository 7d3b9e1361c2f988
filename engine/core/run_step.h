// SPDX-License-Identifier: MIT
#pragma once

#include "engine/core/context.h"

#include <chrono>

namespace hdr {

/// Does one step of a run (HDR_STEP_…): adds its time to the run's, and tells the observer when it ended
/// well. Returns the body's status.
template <typename Body>
HdrStatus runStep(HdrContext *context, int step, Body body) {
    const auto start = std::chrono::steady_clock::now();
    const HdrStatus status = body();
    const auto elapsed = std::chrono::steady_clock::now() - start;
    context->stepMicroseconds[step] += std::chrono::duration_cast<std::chrono::microseconds>(elapsed).count();
    if (status == HDR_OK && context->stepObserver)
        context->stepObserver(context, step, context->stepObserverData);
    return status;
}

} // namespace hdr
