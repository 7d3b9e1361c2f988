// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>

#include "app/pixels.h"

namespace tristop {

/// A BGR picture and its pixels.
struct IILomoData {
    PixelBuffer imageData;
    int32_t imageWidth = 0;
    int32_t imageHeight = 0;
    int32_t imageLineBytes = 0; ///< bytes from one row to the next
};

/// A lens colour; only the low 8 bits of each component count.
struct LomoLensRGB {
    int32_t lensB = 255;
    int32_t lensG = 255;
    int32_t lensR = 255;
};

/// The settings of the colour effect, with their defaults.
struct LomoSettings {
    static constexpr int32_t kStyleOriginal = 0;
    static constexpr int32_t kStyleArt = 1;
    static constexpr int32_t kStyleBlackAndWhite = 2;

    int32_t lomoStyle = kStyleOriginal; ///< any other value than the three applies no style either
    LomoLensRGB lomoLensColor;          ///< all three 255: no lens
    int32_t lomoLensOpacity = 50;       ///< percent
    bool isKeepLomoLensLumonisity = true;
    int32_t lomoContrast = 0;   ///< -100 to 100
    int32_t lomoSaturation = 0; ///< -100 to 100
    int32_t lomoVignetting = 0; ///< 0 for none
};

/**
 * The colour effect: contrast, saturation, style, coloured lens and vignette, and the picture to which they
 * are applied. The kept picture is never modified: callers run the effect on copies of it.
 */
class IILomoEngine : public LomoSettings {
public:
    /// Resets every setting; the kept picture stays.
    void defaultSettings();

    /// Keeps a BGR picture, taking its buffer over, in place of the one before.
    void startLomoNoCopy(PixelBuffer bgr, int32_t width, int32_t height, int32_t lineBytes);

    /// Keeps a copy of a BGR picture. When there is no memory for it the kept record has no pixels.
    void startLomo(const uint8_t *bgr, int32_t width, int32_t height, int32_t lineBytes);

    /// Drops the kept picture.
    void finishLomo();

    /// The kept picture, or null.
    const IILomoData *engineData() const { return lomoData.get(); }

    /**
     * Applies the current settings in place to a BGR picture, which need not be the kept one. Does nothing
     * while no picture is kept, or for a null picture. Always true.
     */
    bool runLomo(uint8_t *bgr, int32_t width, int32_t height, int32_t lineBytes) const;

private:
    std::unique_ptr<IILomoData> lomoData;
};

} // namespace tristop
