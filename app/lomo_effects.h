// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace tristop {

/**
 * The pixel routines of the colour effect. Each works in place on a BGR picture of width x height pixels
 * whose rows lie `lineBytes` apart; bytes behind a row's pixels are never touched. Integer arithmetic
 * throughout: right shifts of negative values round down, results are clamped to 0 to 255. They return
 * true when they ran, and do nothing and return false for a null picture.
 */

/**
 * Raises (or lowers) contrast by a triangle-shaped curve that is steepest around the middle and leaves 0,
 * 127, 128 and 255 alone, then moves every channel away from (or towards) the pixel's largest one by
 * `saturation` percent of their distance. Both run from -100 to 100, 0 for no change; a saturation beyond
 * that leaves the picture with its contrast changed only and returns false.
 */
bool lomoContrastAndSaturation(uint8_t *bgr, int32_t width, int32_t height, int32_t lineBytes,
                               int32_t contrast, int32_t saturation);

/// The cross-processed look: every pixel through the table of art_table.h, trilinearly.
bool lomoArt(uint8_t *bgr, int32_t width, int32_t height, int32_t lineBytes);

/// Every channel becomes the pixel's luminance.
bool lomoBlackAndWhite(uint8_t *bgr, int32_t width, int32_t height, int32_t lineBytes);

/**
 * A coloured lens (components 0 to 255) of `opacity` percent, 0 to 100: the picture multiplied by the
 * lens colour in luminance and chrominance. With `keepBrightness` every pixel keeps its luminance and
 * bright pixels more of their colour.
 */
bool lomoLens(uint8_t *bgr, int32_t width, int32_t height, int32_t lineBytes, uint8_t lensRed,
              uint8_t lensGreen, uint8_t lensBlue, int32_t opacity, bool keepBrightness);

/**
 * Darkens towards the corners, where the factor is 4^(-strength / 50). A negative strength brightens, and
 * what leaves 255 wraps around.
 */
bool lomoVignette(uint8_t *bgr, int32_t width, int32_t height, int32_t lineBytes, int32_t strength);

} // namespace tristop
