// SPDX-License-Identifier: GPL-3.0-or-later
#include <exception>
#include <iostream>
#include <new>
#include <string>
#include <utility>

#include "app/hdr_engine_bridge.h"
#include "app/photographs.h"
#include "app/picture_writer.h"
#include "cli/merge_report.h"
#include "cli/options.h"
#include "cli/progress_bar.h"
#include "cli/report/merge_inspection.h"
#include "cli/report/report_folder.h"
#include "cli/signals.h"
#include "cli/texts.h"

namespace tristop {
namespace {

/// A merge whose progress is shown on the terminal.
class TerminalMerge final : public IHDREngineController {
public:
    explicit TerminalMerge(bool showProgress) : bar(showProgress) {}

    void runProgress(int64_t percentage, bool) override { bar.show(percentage); }

private:
    ProgressBar bar;
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
ExitStatus readPhotographs(const Options &options, IHDREngineController &controller, CameraExifs &cameraExifs,
                           MergeReport &report) {
    const Stopwatch stopwatch;
    Photographs photographs;
    report.error = openPhotographs(options.photographs, photographs);
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

ExitStatus merge(const Options &options, IHDREngineController &controller, MergeReport &report,
                 MergeInspection &inspection) {
    const Stopwatch stopwatch;
    const bool inspects = !options.reportFolder.empty();
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

ExitStatus run(const Options &options, MergeReport &report) {
    report.error = checkTarget(options.output);
    if (report.error)
        return kCannotWrite;
    CameraExifs cameraExifs;
    Picture picture;
    MergeInspection inspection;
    {
        TerminalMerge controller(!options.quiet);
        if (const ExitStatus status = readPhotographs(options, controller, cameraExifs, report);
            status != kSuccess)
            return status;
        if (const ExitStatus status = merge(options, controller, report, inspection); status != kSuccess)
            return status;
        if (const ExitStatus status = applyEffect(options, controller, picture, report); status != kSuccess)
            return status;
    }
    if (const ExitStatus status = write(options, picture, cameraExifs, report); status != kSuccess)
        return status;
    if (!options.reportFolder.empty())
        report.error = writeReportFolder(options, report, inspection);
    return report.error ? kCannotWrite : kSuccess;
}

/// Runs the command; whatever is thrown ends it as a failed merge.
void runToReport(const Options &options, MergeReport &report) {
    const Stopwatch stopwatch;
    try {
        report.exitStatus = run(options, report);
    } catch (const std::bad_alloc &) {
        report.exitStatus = mergeFailed(HDR_ERR_NOMEM, report);
    } catch (const std::exception &error) {
        report.exitStatus = kMergeFailed;
        report.error = FileError{"", error.what()};
    }
    report.totalMilliseconds = stopwatch.milliseconds();
}

void complain(const std::string &message) {
    std::cerr << "tristop-cli: " << message << '\n';
}

/// Prints the report and returns the command's exit status.
ExitStatus tell(const Options &options, const MergeReport &report) {
    if (report.error)
        complain((report.error->path.empty() ? "" : report.error->path + ": ") + report.error->reason);
    else if (report.runInfo.fallback != HDR_FALLBACK_NONE && !options.quiet)
        complain("warning: the picture shows a single exposure: " + fallbackInWords(report.runInfo.fallback));
    if (!options.json || std::cout << reportAsJson(options, report) << std::endl)
        return report.exitStatus;
    complain("the description cannot be written to standard output");
    return report.error ? report.exitStatus : kCannotWrite;
}

} // namespace
} // namespace tristop

int main(int argc, char **argv) {
    using namespace tristop;
    try {
        handleSignals();
        const auto parsed = parseOptions(argc, argv);
        if (const auto *status = std::get_if<ExitStatus>(&parsed))
            return *status;
        const Options &options = std::get<Options>(parsed);
        MergeReport report;
        runToReport(options, report);
        return tell(options, report);
    } catch (const std::exception &error) {
        std::cerr << "tristop-cli: " << error.what() << '\n';
        return kMergeFailed;
    }
}
