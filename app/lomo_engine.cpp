// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/lomo_engine.h"

#include <cstring>
#include <utility>

#include "app/lomo_effects.h"

namespace tristop {

void IILomoEngine::defaultSettings() {
    static_cast<LomoSettings &>(*this) = {};
}

void IILomoEngine::startLomoNoCopy(PixelBuffer bgr, int32_t width, int32_t height, int32_t lineBytes) {
    lomoData = std::make_unique<IILomoData>(IILomoData{std::move(bgr), width, height, lineBytes});
}

void IILomoEngine::startLomo(const uint8_t *bgr, int32_t width, int32_t height, int32_t lineBytes) {
    const size_t bytes = static_cast<size_t>(lineBytes) * static_cast<size_t>(height);
    PixelBuffer copy = allocUnsetPixels(bytes);
    if (copy)
        std::memcpy(copy.get(), bgr, bytes);
    startLomoNoCopy(std::move(copy), width, height, lineBytes);
}

void IILomoEngine::finishLomo() {
    lomoData.reset();
}

bool IILomoEngine::runLomo(uint8_t *bgr, int32_t width, int32_t height, int32_t lineBytes) const {
    if (!lomoData)
        return true;
    lomoContrastAndSaturation(bgr, width, height, lineBytes, lomoContrast, lomoSaturation);
    if (lomoStyle == kStyleBlackAndWhite)
        lomoBlackAndWhite(bgr, width, height, lineBytes);
    else if (lomoStyle == kStyleArt)
        lomoArt(bgr, width, height, lineBytes);

    const auto lensRed = static_cast<uint8_t>(lomoLensColor.lensR & 255);
    const auto lensGreen = static_cast<uint8_t>(lomoLensColor.lensG & 255);
    const auto lensBlue = static_cast<uint8_t>(lomoLensColor.lensB & 255);
    if ((lensRed & lensGreen & lensBlue) != 255)
        lomoLens(bgr, width, height, lineBytes, lensRed, lensGreen, lensBlue, lomoLensOpacity,
                 isKeepLomoLensLumonisity);
    if (lomoVignetting != 0)
        lomoVignette(bgr, width, height, lineBytes, lomoVignetting);
    return true;
}

} // namespace tristop
