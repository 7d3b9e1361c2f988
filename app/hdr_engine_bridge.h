// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>

#include "app/lomo_engine.h"
#include "app/photographs.h"
#include "app/pixels.h"
#include "engine/hdr_engine.h"

namespace tristop {

using EngineInputs = std::array<Offscreen, 3>;

/**
 * One engine run: makes a context, runs the merge on the three inputs and destroys the context. The inputs
 * have the bytes from before when the call returns.
 */
class IHDREngine {
public:
    /**
     * Receives the merged picture as BGRX with rows 4 x width bytes apart, valid during the call only, and a
     * reserved word that is 0.
     */
    using CompletionHandler =
        std::function<void(const uint8_t *bgrx, int32_t width, int32_t height, int64_t reserved)>;

    /// Told the percentage while the exposures are merged, not always on the thread that called run.
    std::function<void(int64_t percentage)> progressObserver;

    /// Asked along with every progress; true ends the run with HDR_CANCELLED. Empty for never, must not
    /// throw. Not always called on the thread that called run.
    std::function<bool()> cancelRequested;

    /// Told each step (HDR_STEP_…) of a run when it has ended, on the thread that called run, with the
    /// context to look into; must not throw. Empty for none.
    std::function<void(const HdrContext &context, int32_t step)> stepObserver;

    /**
     * Merges `inputs`, which are of format 0x501 and one size, on the calling thread. The handler, which may
     * be empty, is called before the call returns, and only when there is a picture; status() tells of
     * failures.
     */
    void run(const EngineInputs &inputs, int64_t toneLength, int64_t birghtness, int64_t toneSaturation,
             int32_t ghostSuppressionLevel, const CompletionHandler &completionHandler);

    /// Result of the latest run; HDR_ERR_PARAM before the first.
    HdrStatus status() const { return lastStatus; }
    /// What the latest run found; all zero when it got nowhere.
    const HdrRunInfo &runInfo() const { return lastRunInfo; }

private:
    HdrStatus merge(const EngineInputs &inputs, const HdrParams &parameters, int32_t ghostSuppressionLevel,
                    const CompletionHandler &completionHandler);
    static int64_t progress(int64_t percentage, int64_t reserved, void *engine);
    static void stepEnded(const HdrContext *context, int32_t step, void *engine);

    HdrStatus lastStatus = HDR_ERR_PARAM;
    HdrRunInfo lastRunInfo{};
};

/**
 * Holds the three input pictures, the merge settings and the colour effect, and runs merges and effects.
 * Everything happens on the calling thread; one call at a time.
 */
class IHDREngineController {
public:
    /// Receives the finished BGR picture, valid during the call only, and a reserved word that is 0.
    using MergeHandler =
        std::function<void(const uint8_t *bgr, int32_t width, int32_t height, int64_t reserved)>;
    /// Receives the finished BGR picture to keep; null when nothing is kept to make it of, or there was not
    /// enough memory.
    using EffectHandler =
        std::function<void(PixelBuffer bgr, int32_t width, int32_t height, int64_t reserved)>;

    IHDREngineController();
    virtual ~IHDREngineController();
    IHDREngineController(const IHDREngineController &) = delete;
    IHDREngineController &operator=(const IHDREngineController &) = delete;

    const std::shared_ptr<IHDREngine> &meEngine() const { return engine; }
    void setMeEngine(std::shared_ptr<IHDREngine> meEngine) { engine = std::move(meEngine); }
    const std::shared_ptr<IILomoEngine> &lomoEngine() const { return lomo; }
    void setLomoEngine(std::shared_ptr<IILomoEngine> lomoEngine) { lomo = std::move(lomoEngine); }
    int64_t toneLength() const { return mergeToneLength; }
    void setToneLength(int64_t toneLength) { mergeToneLength = toneLength; }
    int64_t brightness() const { return mergeBrightness; }
    void setBrightness(int64_t brightness) { mergeBrightness = brightness; }
    int64_t toneSaturation() const { return mergeToneSaturation; }
    void setToneSaturation(int64_t toneSaturation) { mergeToneSaturation = toneSaturation; }
    int32_t ghostSuppressionLevel() const { return mergeGhostLevel; }
    void setGhostSuppressionLevel(int32_t level) { mergeGhostLevel = level; }

    /**
     * Makes the three engine inputs from opened photographs, side by side, in place of those before, and
     * resets the colour effect with its kept picture. An input is as high as its photograph and as wide,
     * rounded up to a multiple of four. False when an input could not be made: there is not enough
     * memory, or a photograph is not open.
     */
    bool convertImages(const Photographs &photographs);

    /// Describes a 0x501 picture and allocates its pixels; plane 0 is null when there is not enough memory.
    static void initOffscreen(int32_t width, int32_t height, Offscreen *offscreen);

    /// Frees and clears the three inputs.
    void releaseOffscreen();

    /**
     * The first three bytes of each four-byte pixel, as a BGR picture with rows bgrLineBytes(width) apart
     * whose padding is not written; null when there is not enough memory.
     */
    static PixelBuffer bgra2bgr(const uint8_t *source, int32_t width, int32_t height, int32_t lineBytes);

    /**
     * Stores the settings, merges the inputs and applies the colour effect with its current settings. The
     * merged picture is kept for further effects. The handler, which may be empty, is not called when
     * the merge fails; status() tells why. Without an engine or a colour effect the merge fails with
     * HDR_ERR_PARAM.
     */
    void run(int64_t toneLength, int64_t birghtness, int64_t toneSaturation, int32_t ghostSuppressionLevel,
             const MergeHandler &completionHandler);

    /**
     * Sets the colour effect and applies it to a copy of the latest merged picture. The handler is always
     * called, with a size of 0 x 0 when nothing has been merged yet; without one only the settings change.
     */
    void run(int32_t lomoStyle, LomoLensRGB lomoLensColor, int32_t lomoLensOpacity, int32_t lomoContrast,
             int32_t lomoSaturation, const EffectHandler &completionHandler);

    /// Result of the latest merge; HDR_ERR_PARAM before the first.
    HdrStatus status() const { return mergeStatus; }

    /// The three inputs, owned by the controller.
    const EngineInputs &inputOffscreen() const { return inputs; }

    /// Hooks for a class that shows a merge; here they do nothing.
    virtual void runProgress(int64_t percentage, bool isCancel);
    virtual void runFinished(HdrStatus status);
    virtual void runFailed(HdrStatus status);

private:
    HdrStatus merge(const MergeHandler &completionHandler);
    bool keepAndShow(const uint8_t *bgrx, int32_t width, int32_t height,
                     const MergeHandler &completionHandler);

    EngineInputs inputs{};
    std::shared_ptr<IHDREngine> engine;
    std::shared_ptr<IILomoEngine> lomo;
    int64_t mergeToneLength = 45;
    int64_t mergeBrightness = 10;
    int64_t mergeToneSaturation = 40;
    int32_t mergeGhostLevel = 6;
    HdrStatus mergeStatus = HDR_ERR_PARAM;
};

} // namespace tristop
