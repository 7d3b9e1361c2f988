// SPDX-License-Identifier: MIT
// Lookup tables that live as long as the context, and the constant tone tables.
#pragma once

#include "engine/hdr_engine.h"

#include <cstddef>
#include <cstdint>

namespace hdr {

inline constexpr size_t kReciprocalCount = 24576;
inline constexpr size_t kLevels12 = 4096;
/// Bytes of contrastCurve8: the table and, from kLumaScratchOffset on, a scratch copy of it.
inline constexpr size_t kContrastCurve8Size = 8448;
inline constexpr size_t kLumaScratchOffset = 4352;
inline constexpr size_t kDetailGainCount = 65536;

/// [256]: 8-bit code to 12-bit linear level.
extern const uint16_t *const kGammaExpand;
/// [4096]: 12-bit linear level to 8-bit code, the inverse of kGammaExpand on its values.
extern const uint8_t *const kGammaCompress;
/// [256]: number of set bits of a byte.
extern const uint8_t *const kBitCount;
/// [256]: weight of an 8-bit level in the merge, 256 up to 128, falling to 35 at 255.
extern const uint16_t *const kFalloff;

/// Fills a 12-bit to 12-bit contrast curve (4096 entries) of the given strength (0 to 200): a dip around 368
/// and a rise around 2416, joined at middle grey (736).
void buildContrastCurve(uint16_t *curve, int strength);

/// Fills a chroma table (4096 entries: 12 bits centred on 2048 to 8 bits) that stretches colour near neutral
/// by `strength` percent, 0 to 100, and compresses extreme colour.
void buildSCurve(uint8_t *table, int strength);

/// The context's lookup tables. Owns all but the first four.
struct Tables {
    const uint16_t *gammaExpand;  ///< kGammaExpand
    const uint8_t *gammaCompress; ///< kGammaCompress
    const uint8_t *bitCountTable; ///< kBitCount
    const uint16_t *falloffTable; ///< kFalloff
    uint32_t *reciprocalTable;    ///< [kReciprocalCount]: entry i is 32768 / i, entry 0 is 0
    uint16_t *contrastCurve12;    ///< [4096]: 12-bit contrast curve; scratch of the brightness curve
    uint8_t *contrastCurve8;      ///< [kContrastCurve8Size]: 12-bit level to 8-bit output luminance
    uint8_t *sCurve8;    ///< [2][4096]: 12-bit chroma centred on 2048 to 8 bits, once for each channel
    int32_t contrastKey; ///< strength of the contrast curve in contrastCurve8
    int32_t sCurveKey;   ///< strength that sCurve8 was built with, 100 at most
    uint8_t
        *toneMatchDarkToMid; ///< [256]: level of one exposure to the level of the other, as the next three
    uint8_t *toneMatchBrightToMid; ///< [256]
    uint8_t *toneMatchMidToDark;   ///< [256]
    uint8_t *toneMatchMidToBright; ///< [256]
    uint16_t *detailGain;          ///< [65536]: signed local contrast (as unsigned index) to a gain in 1/1024

    /// Allocates and builds all tables; attaches them only when every allocation succeeded. 0 or
    /// HDR_ERR_NOMEM.
    HdrStatus create(MemContext *memory);
    void release(MemContext *memory);
};

} // namespace hdr
