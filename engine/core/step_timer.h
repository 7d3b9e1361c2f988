// SPDX-License-Identifier: MIT
#pragma once

#include "engine/core/context.h"

#include <chrono>

namespace hdr {

/// Adds the time from its making to its end to one of the run's steps (HDR_STEP_…).
class StepTimer {
public:
    StepTimer(HdrContext *context, int step) : total(context->stepMicroseconds[step]) {}
    StepTimer(const StepTimer &) = delete;
    StepTimer &operator=(const StepTimer &) = delete;
    ~StepTimer() {
        const auto elapsed = std::chrono::steady_clock::now() - start;
        total += std::chrono::duration_cast<std::chrono::microseconds>(elapsed).count();
    }

private:
    int64_t &total;
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
};

} // namespace hdr
