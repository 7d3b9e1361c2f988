// SPDX-License-Identifier: MIT
#include "engine/core/pipeline.h"

#include "engine/core/context.h"
#include "engine/core/output_crop_resize.h"
#include "engine/core/run_step.h"
#include "engine/core/worker.h"

#include <algorithm>

namespace hdr {

namespace {

constexpr int kProgressStep = 5;

/// What a run works on and reports to.
struct RunArguments {
    Offscreen *inputs;
    const Offscreen *spare;
    int imageCount;
    Offscreen *outputs;
    int outputIndex;
    ProgressCallback callback;
    void *userData;
};

/// Advances the progress by one step and tells the caller. HDR_CANCELLED when the caller wants to stop.
HdrStatus reportProgress(HdrContext *context, const RunArguments &run) {
    if (!run.callback)
        return HDR_OK;
    context->progress += kProgressStep;
    return run.callback(context->progress, 0, run.userData) == HDR_CANCELLED ? HDR_CANCELLED : HDR_OK;
}

/// The analysis and set-up stages, each followed by its progress report.
HdrStatus analyse(MemContext *memory, HdrContext *context, const RunArguments &run) {
    Offscreen *const *workImages = context->preparation.workImages;
    const auto stage = [context](int step, auto body) { return runStep(context, step, body); };
    const auto report = [&] { return reportProgress(context, run); };
    HdrStatus status = HDR_OK;
    const auto failed = [&status](HdrStatus result) { return (status = result) != HDR_OK; };

    if (failed(stage(HDR_STEP_CHECK, [&] { return hdrCheckInputs(memory, context, run.inputs); })) ||
        failed(report()) || //
        failed(stage(HDR_STEP_CHROMA_WEIGHTS,
                     [&] { return chroma_weight_stage(memory, context, workImages); })) ||
        failed(stage(HDR_STEP_WEIGHTS, [&] { return exposure_weight_stage(memory, context); })) ||
        failed(stage(HDR_STEP_FIRST_MERGE, [&] { return first_merge_stage(memory, context, workImages); })) ||
        failed(report()) || //
        failed(stage(HDR_STEP_EXPOSURE_MERGE, [&] { return exposure_merge_stage(memory, context); })) ||
        failed(report()) || //
        failed(stage(HDR_STEP_RENDER_SETUP,
                     [&] {
                         return render_setup(memory, context, run.inputs, run.imageCount, run.outputs,
                                             run.outputIndex);
                     })) ||
        failed(report()))
        return status;
    if (context->smoothingFlag &&
        failed(stage(HDR_STEP_RENDER_SETUP, [&] { return band_buffer_stage(memory, context); })))
        return status;
    return report();
}

/// Renders the bands; the status of the first one that did not end well.
HdrStatus renderBands(MemContext *memory, HdrContext *context, const RunArguments &run) {
    const Area &area = context->render.workingRectangle;
    const std::array<HdrBand, 4> bands = splitBands(area.y, area.height);
    struct Job {
        HdrBandTask task;
        HdrStatus status;
    };
    std::array<Job, 4> jobs;
    for (size_t i = 0; i < jobs.size(); i++)
        jobs[i].task = {memory,
                        context,
                        run.inputs,
                        run.spare,
                        static_cast<uint32_t>(run.imageCount),
                        run.outputs,
                        static_cast<uint32_t>(run.outputIndex),
                        nullptr,
                        run.callback,
                        run.userData,
                        static_cast<uint32_t>(i),
                        &bands[i]};
    runOnFourWorkers(jobs, [](Job &job) { job.status = hdrBandWorker(job.task); });
    const auto failed =
        std::find_if(jobs.begin(), jobs.end(), [](const Job &job) { return job.status != HDR_OK; });
    return failed == jobs.end() ? HdrStatus{HDR_OK} : failed->status;
}

/// Cuts the rendered picture to what is valid in every exposure and fills the reference's record with it
/// again.
HdrStatus cropOutput(MemContext *memory, HdrContext *context, const RunArguments &run) {
    const Preparation &preparation = context->preparation;
    Offscreen *rendered = &run.inputs[preparation.midIndex];
    Offscreen *spare = nullptr;
    if (run.imageCount == 3)
        spare = &run.inputs[preparation.brightIndex];
    else if (run.imageCount == 2)
        spare = &run.inputs[preparation.midIndex != 1 ? 1 : 0];
    else
        return HDR_OK;
    Rect crop = context->render.outputCrop;
    const HdrStatus status = outputCropResize(memory, rendered, spare, &crop);
    offscreenCopyAll(rendered, spare);
    return status;
}

} // namespace

std::array<HdrBand, 4> splitBands(int top, int height) {
    std::array<HdrBand, 4> bands;
    const auto relativeEdge = [height](int index) { return 8 * (index * height / 32); };
    for (int i = 0; i < 4; i++) {
        const int end = i < 3 ? relativeEdge(i + 1) : height;
        bands[static_cast<size_t>(i)] = {
            static_cast<uint32_t>(i), static_cast<uint32_t>(top + relativeEdge(i)),
            static_cast<uint32_t>(top + end), static_cast<uint32_t>(relativeEdge(i))};
    }
    return bands;
}

HdrStatus hdrRunPipeline(MemContext *memory, HdrContext *context, Offscreen *inputs, const Offscreen *spare,
                         int imageCount, Offscreen *outputs, int outputIndex, void * /*unused*/,
                         void * /*reserved*/, ProgressCallback callback, void *userData, int toneLength,
                         int brightness, int toneSaturation) {
    context->toneLength = toneLength;
    context->brightness = brightness;
    context->toneSaturation = toneSaturation;
    context->imageCount = imageCount;
    context->progress = 0;
    const RunArguments run = {inputs, spare, imageCount, outputs, outputIndex, callback, userData};
    HdrStatus status = analyse(memory, context, run);
    if (status != HDR_OK)
        return status;
    if (context->earlyExitCode != HDR_OK) {
        status = context->earlyExitCode;
        context->earlyExitCode = HDR_OK;
        hdrReleaseRunBuffers(memory, context);
        return status;
    }
    status = runStep(context, HDR_STEP_RENDER, [&] { return renderBands(memory, context, run); });
    if (status != HDR_OK)
        return status;
    status = runStep(context, HDR_STEP_OUTPUT, [&] { return cropOutput(memory, context, run); });
    hdrReleaseRunBuffers(memory, context);
    return status;
}

} // namespace hdr
