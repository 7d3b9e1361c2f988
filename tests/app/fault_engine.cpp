// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/fault_engine.h"

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <new>

#include <unistd.h>

/// The engine's context is opaque to its callers; this one holds nothing.
struct HdrContext {};

namespace tristop::testing {
namespace {

int fromEnvironment(const char *name) {
    const char *value = std::getenv(name);
    return value != nullptr ? std::atoi(value) : 0;
}

} // namespace

FaultEngine &faultEngine() {
    static FaultEngine engine{.status = fromEnvironment("TRISTOP_FAULT_STATUS"),
                              .fallback = static_cast<HdrFallback>(fromEnvironment("TRISTOP_FAULT_FALLBACK")),
                              .throws = fromEnvironment("TRISTOP_FAULT_THROWS") != 0,
                              .signalAtSync = fromEnvironment("TRISTOP_FAULT_SIGNAL"),
                              .interrupts = fromEnvironment("TRISTOP_FAULT_INTERRUPT") != 0};
    return engine;
}

} // namespace tristop::testing

using tristop::testing::faultEngine;

HdrStatus hdrCreate(MemContext *, int64_t, HdrContext **context) {
    *context = new HdrContext;
    ++faultEngine().contexts;
    return faultEngine().createStatus;
}

HdrStatus hdrSetGhostSuppressionLevel(MemContext *, HdrContext *, int32_t level) {
    faultEngine().ghostLevel = level;
    return HDR_OK;
}

HdrStatus hdrSetStepObserver(HdrContext *, HdrStepObserver, void *) {
    return HDR_OK;
}

HdrStatus hdrProcess(MemContext *, HdrContext *, Offscreen *inputs, int32_t imageCount, Offscreen *outputs,
                     int32_t outputIndex, const HdrParams *parameters, void *, ProgressCallback callback,
                     void *userData) {
    auto &engine = faultEngine();
    ++engine.runs;
    engine.imageCount = imageCount;
    engine.outputIndex = outputIndex;
    engine.parameters = *parameters;
    callback(50, 0, nullptr);
    if (engine.interrupts)
        std::raise(SIGINT);
    engine.callbackResult = callback(60, 0, userData);
    for (int32_t i = 0; i < imageCount; ++i)
        std::memset(inputs[i].ppu8Plane[0], 77,
                    static_cast<size_t>(inputs[i].pi32Pitch[0] * inputs[i].i32Height));
    if (engine.throws)
        throw std::bad_alloc();
    const Offscreen &output = outputs[outputIndex];
    for (int32_t i = 0; i < output.pi32Pitch[0] * output.i32Height; ++i)
        output.ppu8Plane[0][i] = i % 2 == 0 ? tristop::testing::kMergedLuma : 128;
    return engine.callbackResult == HDR_CANCELLED ? HdrStatus{HDR_CANCELLED} : engine.status;
}

HdrStatus hdrDestroy(MemContext *, HdrContext *context) {
    delete context;
    --faultEngine().contexts;
    return HDR_OK;
}

HdrStatus hdrGetRunInfo(const HdrContext *, HdrRunInfo *info) {
    *info = {};
    info->midIndex = 1;
    info->brightIndex = 2;
    info->fallback = faultEngine().fallback;
    return HDR_OK;
}

/// Comes before the system's.
int fsync(int) {
    return std::raise(faultEngine().signalAtSync);
}

const char *hdrStepName(int32_t step) {
    return step >= 0 && step < HDR_STEP_COUNT ? "step" : nullptr;
}
