// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/merge_bracket.h"

#include <exception>
#include <new>
#include <utility>

#include "app/hdr_engine_bridge.h"
#include "app/photographs.h"
#include "app/picture_writer.h"
#include "cli/report/merge_inspection.h"
#include "cli/report/report_folder.h"
#include "cli/texts.h"
#include "cli/write_options.h"

namespace tristop {
namespace {

/// A merge whose progress is told to a watch.
class WatchedMerge final : public IHDREngineController {
public:
    explicit WatchedMerge(const MergeWatch &watch) : watch(watch) {}

    void runProgress(int64_t percentage, bool) override {
        if (watch.progress)
            watch.progress(percentage);
    }

private:
    const MergeWatch &watch;
};

/// A finished BGR picture.
struct Picture {
    PixelBuffer bgr;
    int32_t width = 0;
    int32_t height = 0;
};

ExitStatus mergeFailed(HdrStatus status, MergeReport &report) {
    report.engineStatus = status;
    report.error = FileError{"", "the merge failed: " + statusInWords(status)};
    return kMergeFailed;
}

/// Reads the photographs into the engine's inputs.
ExitStatus readPhotographs(const Options &options, size_t decodingMemory, IHDREngineController &controller,
                           CameraExifs &cameraExifs, MergeReport &report) {
    const Stopwatch stopwatch;
    Photographs photographs;
    report.error = openPhotographs(options.photographs, photographs, decodingMemory);
    if (report.error)
        return kBadPhotograph;
    cameraExifs = readCameraExifs(options.photographs, options.writing);
    const ImageSize size = photographs[0].imageSize(photographs[0].orientation());
    report.width = static_cast<int32_t>(size.width);
    report.height = static_cast<int32_t>(size.height);
    if (!controller.convertImages(photographs))
        return mergeFailed(HDR_ERR_NOMEM, report);
    report.decodeMilliseconds = stopwatch.milliseconds();
    return kSuccess;
}

ExitStatus merge(const Options &options, const MergeWatch &watch, IHDREngineController &controller,
                 MergeReport &report, MergeInspection &inspection) {
    const Stopwatch stopwatch;
    const bool inspects = !options.reportFolder.empty();
    controller.meEngine()->cancelRequested = watch.cancelRequested;
    if (inspects || options.json)
        controller.meEngine()->stepObserver = [&report, &inspection, inspects](const HdrContext &context,
                                                                               int32_t step) {
            report.findings.observe(context, step);
            if (inspects)
                inspection.observe(context, step);
        };
    controller.run(options.toneLength, options.brightness, options.toneSaturation, options.ghostLevel,
                   nullptr);
    report.mergeMilliseconds = stopwatch.milliseconds();
    if (controller.status() != HDR_OK)
        return mergeFailed(controller.status(), report);
    report.engineStatus = HDR_OK;
    report.runInfo = controller.meEngine()->runInfo();
    return kSuccess;
}

ExitStatus applyEffect(const Options &options, IHDREngineController &controller, Picture &picture,
                       MergeReport &report) {
    const Stopwatch stopwatch;
    const LomoSettings &settings = *controller.lomoEngine();
    controller.run(options.style, settings.lomoLensColor, settings.lomoLensOpacity, options.contrast,
                   options.saturation, [&picture](PixelBuffer bgr, int32_t width, int32_t height, int64_t) {
                       picture = {std::move(bgr), width, height};
                   });
    report.effectMilliseconds = stopwatch.milliseconds();
    return picture.bgr ? kSuccess : mergeFailed(HDR_ERR_NOMEM, report);
}

ExitStatus write(const Options &options, const Picture &picture, const CameraExifs &cameraExifs,
                 MergeReport &report) {
    const Stopwatch stopwatch;
    report.error = writeMergedPicture(
        options.output, {picture.bgr.get(), picture.width, picture.height, bgrLineBytes(picture.width)},
        report.width, cameraExifs[static_cast<size_t>(report.runInfo.midIndex)], options.writing);
    report.writeMilliseconds = stopwatch.milliseconds();
    return report.error ? kCannotWrite : kSuccess;
}

ExitStatus run(const Options &options, const MergeWatch &watch, size_t decodingMemory, MergeReport &report) {
    report.error = checkTarget(options.output);
    if (report.error)
        return kCannotWrite;
    const auto cancelled = [&watch] { return watch.cancelRequested && watch.cancelRequested(); };
    CameraExifs cameraExifs;
    Picture picture;
    MergeInspection inspection;
    {
        WatchedMerge controller(watch);
        if (const ExitStatus status =
                readPhotographs(options, decodingMemory, controller, cameraExifs, report);
            status != kSuccess)
            return status;
        if (cancelled())
            return mergeFailed(HDR_CANCELLED, report);
        if (const ExitStatus status = merge(options, watch, controller, report, inspection);
            status != kSuccess)
            return status;
        if (const ExitStatus status = applyEffect(options, controller, picture, report); status != kSuccess)
            return status;
    }
    if (cancelled())
        return mergeFailed(HDR_CANCELLED, report);
    if (const ExitStatus status = write(options, picture, cameraExifs, report); status != kSuccess)
        return status;
    if (!options.reportFolder.empty())
        report.error = writeReportFolder(options, report, inspection);
    return report.error ? kCannotWrite : kSuccess;
}

} // namespace

MergeReport mergeBracket(const Options &options, const MergeWatch &watch, size_t decodingMemory) {
    const Stopwatch stopwatch;
    MergeReport report;
    try {
        report.exitStatus = run(options, watch, decodingMemory, report);
    } catch (const std::bad_alloc &) {
        report.exitStatus = mergeFailed(HDR_ERR_NOMEM, report);
    } catch (const std::exception &error) {
        report.exitStatus = kMergeFailed;
        report.error = FileError{"", error.what()};
    }
    report.totalMilliseconds = stopwatch.milliseconds();
    return report;
}

std::string inOneLine(const FileError &error) {
    return (error.path.empty() ? "" : error.path + ": ") + error.reason;
}

} // namespace tristop
