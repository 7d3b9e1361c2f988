// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/hdr_engine_bridge.h"

#include <algorithm>
#include <future>
#include <utility>

#include <libyuv.h>

#include "app/bands.h"
#include "app/yuv_rgb.h"

namespace tristop {
namespace {

struct ContextDeleter {
    void operator()(HdrContext *context) const { hdrDestroy(nullptr, context); }
};
using Context = std::unique_ptr<HdrContext, ContextDeleter>;

/// A new context in `context`, null on failure. A context that could not be made whole is destroyed again.
HdrStatus createContext(Context &context) {
    HdrContext *created = nullptr;
    const HdrStatus status = hdrCreate(nullptr, 0, &created);
    context.reset(created);
    if (status != HDR_OK)
        context.reset();
    return status;
}

/// A copy of the inputs for the engine, whose working space they are.
class WorkingInputs {
public:
    explicit WorkingInputs(const EngineInputs &inputs) : copies(inputs) {
        for (size_t i = 0; i < inputs.size(); ++i) {
            std::fill(std::begin(copies[i].ppu8Plane), std::end(copies[i].ppu8Plane), nullptr);
            if (inputs[i].ppu8Plane[0] == nullptr)
                continue;
            CBYUVRGB::allocOffscreen(&copies[i]);
            CBYUVRGB::copyOffscreen(inputs[i], copies[i]);
        }
    }
    ~WorkingInputs() {
        for (Offscreen &copy : copies)
            CBYUVRGB::releaseOffscreen(&copy);
    }
    WorkingInputs(const WorkingInputs &) = delete;
    WorkingInputs &operator=(const WorkingInputs &) = delete;

    EngineInputs &pictures() { return copies; }

    bool complete() const {
        return std::ranges::all_of(copies,
                                   [](const Offscreen &copy) { return copy.ppu8Plane[0] != nullptr; });
    }

private:
    EngineInputs copies;
};

/// Has an engine tell its progress for as long as this lives.
class ProgressObservation {
public:
    ProgressObservation(IHDREngine &engine, std::function<void(int64_t)> observer) : engine(engine) {
        engine.progressObserver = std::move(observer);
    }
    ~ProgressObservation() { engine.progressObserver = nullptr; }
    ProgressObservation(const ProgressObservation &) = delete;
    ProgressObservation &operator=(const ProgressObservation &) = delete;

private:
    IHDREngine &engine;
};

} // namespace

int64_t IHDREngine::progress(int64_t percentage, int64_t, void *userData) {
    const auto *engine = static_cast<const IHDREngine *>(userData);
    if (engine == nullptr)
        return 0;
    if (engine->progressObserver)
        engine->progressObserver(percentage);
    return engine->cancelRequested && engine->cancelRequested() ? HDR_CANCELLED : HDR_OK;
}

void IHDREngine::stepEnded(const HdrContext *context, int32_t step, void *userData) {
    static_cast<const IHDREngine *>(userData)->stepObserver(*context, step);
}

void IHDREngine::run(const EngineInputs &inputs, int64_t toneLength, int64_t birghtness,
                     int64_t toneSaturation, int32_t ghostSuppressionLevel,
                     const CompletionHandler &completionHandler) {
    lastRunInfo = {};
    lastStatus =
        merge(inputs, {toneLength, birghtness, toneSaturation}, ghostSuppressionLevel, completionHandler);
}

HdrStatus IHDREngine::merge(const EngineInputs &inputs, const HdrParams &parameters,
                            int32_t ghostSuppressionLevel, const CompletionHandler &completionHandler) {
    if (std::ranges::any_of(inputs, [](const Offscreen &input) { return input.ppu8Plane[0] == nullptr; }))
        return HDR_ERR_PARAM;
    Context context;
    if (const HdrStatus status = createContext(context); status != HDR_OK)
        return status;
    WorkingInputs working(inputs);
    if (!working.complete())
        return HDR_ERR_NOMEM;

    constexpr int32_t kOutputIndex = 2;
    EngineInputs &pictures = working.pictures();
    hdrSetGhostSuppressionLevel(nullptr, context.get(), ghostSuppressionLevel);
    if (stepObserver)
        hdrSetStepObserver(context.get(), &IHDREngine::stepEnded, this);
    const HdrStatus status =
        hdrProcess(nullptr, context.get(), pictures.data(), static_cast<int32_t>(pictures.size()),
                   pictures.data(), kOutputIndex, &parameters, nullptr, &IHDREngine::progress, this);
    hdrGetRunInfo(context.get(), &lastRunInfo);
    if (status != HDR_OK)
        return status;
    const Offscreen &merged = pictures[kOutputIndex];
    const PixelBuffer bgrx = CBYUVRGB::bgraData(&merged);
    if (!bgrx)
        return HDR_ERR_NOMEM;
    if (completionHandler)
        completionHandler(bgrx.get(), merged.i32Width, merged.i32Height, 0);
    return HDR_OK;
}

IHDREngineController::IHDREngineController()
    : engine(std::make_shared<IHDREngine>()), lomo(std::make_shared<IILomoEngine>()) {}

IHDREngineController::~IHDREngineController() {
    if (lomo)
        lomo->finishLomo();
    releaseOffscreen();
}

bool IHDREngineController::convertImages(const Photographs &photographs) {
    releaseOffscreen();
    std::array<std::future<bool>, 3> converted;
    for (size_t i = 0; i < photographs.size(); ++i)
        converted[i] = std::async([&photograph = photographs[i], &input = inputs[i]] {
            const ImageSize size = photograph.imageSize(photograph.orientation());
            initOffscreen(roundUpTo4(static_cast<int32_t>(size.width)), static_cast<int32_t>(size.height),
                          &input);
            return photograph.image(photograph.orientation(), &input);
        });
    bool complete = true;
    for (std::future<bool> &result : converted)
        complete = result.get() && complete;
    if (lomo) {
        lomo->finishLomo();
        lomo->defaultSettings();
    }
    return complete;
}

void IHDREngineController::initOffscreen(int32_t width, int32_t height, Offscreen *offscreen) {
    offscreen->i32Width = width;
    offscreen->i32Height = height;
    offscreen->u32PixelArrayFormat = HDR_FORMAT_YUY2;
    CBYUVRGB::allocOffscreen(offscreen);
}

void IHDREngineController::releaseOffscreen() {
    for (Offscreen &input : inputs) {
        CBYUVRGB::releaseOffscreen(&input);
        input = {};
    }
}

PixelBuffer IHDREngineController::bgra2bgr(const uint8_t *source, int32_t width, int32_t height,
                                           int32_t lineBytes) {
    const int32_t bgrStride = bgrLineBytes(width);
    PixelBuffer bgr = allocUnsetPixels(static_cast<size_t>(bgrStride) * static_cast<size_t>(height));
    if (bgr)
        forEachBand(height, [&](int64_t first, int64_t end) {
            libyuv::ARGBToRGB24(source + first * lineBytes, lineBytes, bgr.get() + first * bgrStride,
                                bgrStride, width, static_cast<int>(end - first));
        });
    return bgr;
}

void IHDREngineController::run(int64_t toneLength, int64_t birghtness, int64_t toneSaturation,
                               int32_t ghostSuppressionLevel, const MergeHandler &completionHandler) {
    setToneLength(toneLength);
    setBrightness(birghtness);
    setToneSaturation(toneSaturation);
    setGhostSuppressionLevel(ghostSuppressionLevel);
    mergeStatus = merge(completionHandler);
    if (mergeStatus == HDR_OK)
        runFinished(mergeStatus);
    else
        runFailed(mergeStatus);
}

HdrStatus IHDREngineController::merge(const MergeHandler &completionHandler) {
    const auto running = engine;
    if (!running || !lomo)
        return HDR_ERR_PARAM;
    const ProgressObservation observation(*running,
                                          [this](int64_t percentage) { runProgress(percentage, false); });
    bool shown = false;
    running->run(inputs, mergeToneLength, mergeBrightness, mergeToneSaturation, mergeGhostLevel,
                 [&](const uint8_t *bgrx, int32_t width, int32_t height, int64_t) {
                     shown = keepAndShow(bgrx, width, height, completionHandler);
                 });
    return running->status() == HDR_OK && !shown ? HdrStatus{HDR_ERR_NOMEM} : running->status();
}

/// Hands a merged picture to the colour effect, which keeps it, and shows it as the effect renders it. False
/// when there is not enough memory.
bool IHDREngineController::keepAndShow(const uint8_t *bgrx, int32_t width, int32_t height,
                                       const MergeHandler &completionHandler) {
    PixelBuffer merged = bgra2bgr(bgrx, width, height, 4 * width);
    if (!merged)
        return false;
    lomo->startLomoNoCopy(std::move(merged), width, height, bgrLineBytes(width));
    bool shown = true;
    EffectHandler show;
    if (completionHandler)
        show = [&](PixelBuffer bgr, int32_t effectWidth, int32_t effectHeight, int64_t reserved) {
            shown = bgr != nullptr;
            if (shown)
                completionHandler(bgr.get(), effectWidth, effectHeight, reserved);
        };
    run(lomo->lomoStyle, lomo->lomoLensColor, lomo->lomoLensOpacity, lomo->lomoContrast, lomo->lomoSaturation,
        show);
    return shown;
}

void IHDREngineController::run(int32_t lomoStyle, LomoLensRGB lomoLensColor, int32_t lomoLensOpacity,
                               int32_t lomoContrast, int32_t lomoSaturation,
                               const EffectHandler &completionHandler) {
    if (lomo) {
        lomo->isKeepLomoLensLumonisity = true;
        lomo->lomoLensOpacity = lomoLensOpacity;
        lomo->lomoLensColor = lomoLensColor;
        lomo->lomoStyle = lomoStyle;
        lomo->lomoSaturation = lomoSaturation;
        lomo->lomoContrast = lomoContrast;
    }
    if (!completionHandler)
        return;
    if (!lomo || lomo->engineData() == nullptr) {
        completionHandler(nullptr, 0, 0, 0);
        return;
    }
    const IILomoData &kept = *lomo->engineData();
    const size_t bytes = static_cast<size_t>(kept.imageHeight) * static_cast<size_t>(kept.imageLineBytes);
    PixelBuffer copy = kept.imageData ? allocUnsetPixels(bytes) : nullptr;
    if (copy)
        copyInBands(copy.get(), kept.imageData.get(), bytes);
    lomo->runLomo(copy.get(), kept.imageWidth, kept.imageHeight, kept.imageLineBytes);
    completionHandler(std::move(copy), kept.imageWidth, kept.imageHeight, 0);
}

void IHDREngineController::runProgress(int64_t, bool) {}
void IHDREngineController::runFinished(HdrStatus) {}
void IHDREngineController::runFailed(HdrStatus) {}

} // namespace tristop
