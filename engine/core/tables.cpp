// SPDX-License-Identifier: MIT
#include "engine/core/tables.h"

#include "engine/core/buffer.h"
#include "engine/prepare/preparation.h"

#include <array>
#include <bit>
#include <cassert>
#include <cstdlib>

namespace hdr {

namespace {

// clang-format off
constexpr std::array<uint16_t, 256> kGammaExpandValues = {
    0, 1, 2, 4, 5, 6, 7, 9, 10, 11, 12, 14, 15, 16, 18, 20,
    21, 23, 25, 27, 29, 31, 33, 35, 37, 40, 42, 45, 48, 50, 53, 56,
    59, 62, 66, 69, 72, 76, 79, 83, 87, 91, 95, 99, 103, 107, 112, 116,
    121, 126, 131, 136, 141, 146, 151, 156, 162, 168, 173, 179, 185, 191, 197, 204,
    210, 216, 223, 230, 237, 244, 251, 258, 265, 273, 280, 288, 296, 304, 312, 320,
    329, 337, 346, 354, 363, 372, 381, 390, 400, 409, 419, 428, 438, 448, 458, 469,
    479, 490, 500, 511, 522, 533, 544, 555, 567, 578, 590, 602, 614, 626, 639, 651,
    664, 676, 689, 702, 715, 728, 742, 755, 769, 783, 797, 811, 825, 840, 854, 869,
    884, 899, 914, 929, 945, 960, 976, 992, 1008, 1024, 1041, 1057, 1074, 1091, 1108, 1125,
    1142, 1159, 1177, 1195, 1213, 1231, 1249, 1267, 1286, 1304, 1323, 1342, 1361, 1381, 1400, 1420,
    1440, 1459, 1480, 1500, 1520, 1541, 1562, 1582, 1603, 1625, 1646, 1668, 1689, 1711, 1733, 1755,
    1778, 1800, 1823, 1846, 1869, 1892, 1916, 1939, 1963, 1987, 2011, 2035, 2059, 2084, 2109, 2133,
    2159, 2184, 2209, 2235, 2260, 2286, 2312, 2339, 2365, 2392, 2419, 2446, 2473, 2500, 2527, 2555,
    2583, 2611, 2639, 2668, 2696, 2725, 2754, 2783, 2812, 2841, 2871, 2901, 2931, 2961, 2991, 3022,
    3052, 3083, 3114, 3146, 3177, 3209, 3240, 3272, 3304, 3337, 3369, 3402, 3435, 3468, 3501, 3535,
    3568, 3602, 3636, 3670, 3705, 3739, 3774, 3809, 3844, 3879, 3915, 3950, 3986, 4022, 4059, 4095,
};

/// First 12-bit level of each 8-bit code from 1 on.
constexpr std::array<uint16_t, 255> kGammaBreakPoints = {
    1, 2, 4, 5, 6, 7, 9, 10, 11, 12, 14, 15, 16, 18, 19, 21,
    23, 24, 26, 28, 30, 32, 34, 37, 39, 42, 44, 47, 49, 52, 55, 58,
    61, 64, 68, 71, 74, 78, 82, 85, 89, 93, 97, 102, 106, 110, 115, 119,
    124, 129, 134, 139, 144, 149, 154, 160, 165, 171, 177, 183, 189, 195, 201, 207,
    214, 220, 227, 234, 241, 248, 255, 262, 270, 277, 285, 293, 300, 308, 317, 325,
    333, 342, 350, 359, 368, 377, 386, 395, 405, 414, 424, 434, 444, 454, 464, 474,
    485, 495, 506, 517, 528, 539, 550, 562, 573, 585, 597, 609, 621, 633, 645, 658,
    670, 683, 696, 709, 722, 736, 749, 763, 777, 790, 805, 819, 833, 848, 862, 877,
    892, 907, 922, 938, 953, 969, 985, 1001, 1017, 1033, 1049, 1066, 1083, 1100, 1117, 1134,
    1151, 1169, 1186, 1204, 1222, 1240, 1259, 1277, 1296, 1314, 1333, 1352, 1372, 1391, 1410, 1430,
    1450, 1470, 1490, 1510, 1531, 1552, 1572, 1593, 1615, 1636, 1657, 1679, 1701, 1723, 1745, 1767,
    1790, 1812, 1835, 1858, 1881, 1904, 1928, 1951, 1975, 1999, 2023, 2048, 2072, 2097, 2122, 2146,
    2172, 2197, 2222, 2248, 2274, 2300, 2326, 2352, 2379, 2406, 2433, 2460, 2487, 2514, 2542, 2570,
    2597, 2626, 2654, 2682, 2711, 2740, 2769, 2798, 2827, 2857, 2886, 2916, 2946, 2977, 3007, 3038,
    3068, 3099, 3130, 3162, 3193, 3225, 3257, 3289, 3321, 3354, 3386, 3419, 3452, 3485, 3518, 3552,
    3586, 3620, 3654, 3688, 3722, 3757, 3792, 3827, 3862, 3897, 3933, 3969, 4005, 4041, 4077,
};

constexpr std::array<uint16_t, 127> kFalloffAboveMiddle = {
    252, 248, 244, 240, 237, 233, 229, 226, 222, 219, 216, 212, 209, 206, 203, 199,
    196, 193, 190, 187, 184, 182, 179, 176, 173, 171, 168, 165, 163, 160, 158, 155,
    153, 150, 148, 146, 144, 141, 139, 137, 135, 133, 131, 129, 127, 125, 123, 121,
    119, 117, 115, 114, 112, 110, 108, 107, 105, 103, 102, 100, 99, 97, 96, 94,
    93, 91, 90, 88, 87, 86, 84, 83, 82, 81, 79, 78, 77, 76, 75, 73,
    72, 71, 70, 69, 68, 67, 66, 65, 64, 63, 62, 61, 60, 59, 58, 57,
    56, 55, 55, 54, 53, 52, 51, 50, 50, 49, 48, 47, 47, 46, 45, 44,
    44, 43, 42, 42, 41, 41, 40, 39, 39, 38, 37, 37, 36, 36, 35,
};
// clang-format on

constexpr std::array<uint8_t, kLevels12> makeGammaCompress() {
    std::array<uint8_t, kLevels12> table{};
    size_t code = 0;
    for (size_t level = 0; level < table.size(); level++) {
        while (code < kGammaBreakPoints.size() && kGammaBreakPoints[code] <= level)
            code++;
        table[level] = static_cast<uint8_t>(code);
    }
    return table;
}

constexpr std::array<uint16_t, 256> makeFalloff() {
    std::array<uint16_t, 256> table{};
    for (size_t level = 0; level < table.size(); level++)
        table[level] = level <= 128 ? 256 : kFalloffAboveMiddle[level - 129];
    return table;
}

constexpr std::array<uint8_t, 256> makeBitCount() {
    std::array<uint8_t, 256> table{};
    for (unsigned byte = 0; byte < table.size(); byte++)
        table[byte] = static_cast<uint8_t>(std::popcount(byte));
    return table;
}

constexpr std::array<uint8_t, kLevels12> kGammaCompressValues = makeGammaCompress();
constexpr std::array<uint16_t, 256> kFalloffValues = makeFalloff();
constexpr std::array<uint8_t, 256> kBitCountValues = makeBitCount();

constexpr int kStrengthAtCreation = 30;

} // namespace

const uint16_t *const kGammaExpand = kGammaExpandValues.data();
const uint8_t *const kGammaCompress = kGammaCompressValues.data();
const uint16_t *const kFalloff = kFalloffValues.data();
const uint8_t *const kBitCount = kBitCountValues.data();

void buildContrastCurve(uint16_t *curve, int strength) {
    // Up to here no level is moved beyond the ends of the scale.
    assert(strength >= 0 && strength <= 200);
    // Adding and taking off 1.0 rounds the slope to a multiple of 2^-52: at strength 30 it ends a hair below
    // 0.15, and products that would land exactly on an integer truncate one lower.
    const double slope = (strength * 0.005 + 1.0) - 1.0;
    for (int level = 0; level < static_cast<int>(kLevels12); level++) {
        if (level <= 736)
            curve[level] =
                static_cast<uint16_t>(level - static_cast<int>((368 - std::abs(level - 368)) * slope));
        else
            curve[level] =
                static_cast<uint16_t>(level + static_cast<int>((1679 - std::abs(level - 2416)) * slope));
    }
}

void buildSCurve(uint8_t *table, int strength) {
    const auto store = [table](int index, int value) { table[index] = static_cast<uint8_t>(value >> 4); };
    const auto stretch = [strength](int distance) { return strength * distance / 100; };
    for (int j = 1; j < 1024; j++) {
        store(j, j - stretch(j));
        store(2048 - j, 2048 - j - stretch(j));
        store(2048 + j, 2048 + j + stretch(j));
        // One below the mirror image of the lowest quarter, so that 4095 is the end of the scale.
        store(4096 - j, 4095 - j + stretch(j));
    }
    table[0] = 0;
    store(1024, 1024 - stretch(1024));
    table[2048] = 128;
    store(3072, 3071 + stretch(1024));
}

HdrStatus Tables::create(MemContext *memory) {
    Buffer<uint32_t> reciprocal(memory, kReciprocalCount);
    Buffer<uint16_t> curve12(memory, kLevels12);
    Buffer<uint8_t> curve8(memory, kContrastCurve8Size);
    Buffer<uint8_t> chroma(memory, 2 * kLevels12);
    Buffer<uint16_t> gain = Buffer<uint16_t>::zeroed(memory, kDetailGainCount);
    std::array<Buffer<uint8_t>, 4> toneMatch;
    bool complete = reciprocal && curve12 && curve8 && chroma && gain;
    for (Buffer<uint8_t> &table : toneMatch) {
        table = Buffer<uint8_t>(memory, kBins);
        complete = complete && table;
    }
    if (!complete)
        return HDR_ERR_NOMEM;

    reciprocal[0] = 0;
    for (uint32_t i = 1; i < kReciprocalCount; i++)
        reciprocal[i] = 32768 / i;
    buildContrastCurve(curve12.data(), kStrengthAtCreation);
    for (size_t level = 0; level < kLevels12; level++)
        curve8[level] = kGammaCompress[curve12[level]];
    buildSCurve(chroma.data(), kStrengthAtCreation);
    engineMemcpy(chroma.data() + kLevels12, chroma.data(), kLevels12);
    // No detail curve writes the gain of the lowest index, so it is neutral from the start.
    gain[kDetailGainCount / 2] = 1024;
    for (Buffer<uint8_t> &table : toneMatch)
        for (size_t level = 0; level < table.size(); level++)
            table[level] = static_cast<uint8_t>(level);

    gammaExpand = kGammaExpand;
    gammaCompress = kGammaCompress;
    bitCountTable = kBitCount;
    falloffTable = kFalloff;
    reciprocalTable = reciprocal.release();
    contrastCurve12 = curve12.release();
    contrastCurve8 = curve8.release();
    sCurve8 = chroma.release();
    contrastKey = kStrengthAtCreation;
    sCurveKey = kStrengthAtCreation;
    toneMatchDarkToMid = toneMatch[0].release();
    toneMatchBrightToMid = toneMatch[1].release();
    toneMatchMidToDark = toneMatch[2].release();
    toneMatchMidToBright = toneMatch[3].release();
    detailGain = gain.release();
    return HDR_OK;
}

void Tables::release(MemContext *memory) {
    releaseArray(memory, reciprocalTable);
    releaseArray(memory, contrastCurve12);
    releaseArray(memory, contrastCurve8);
    releaseArray(memory, sCurve8);
    releaseArray(memory, toneMatchDarkToMid);
    releaseArray(memory, toneMatchBrightToMid);
    releaseArray(memory, toneMatchMidToDark);
    releaseArray(memory, toneMatchMidToBright);
    releaseArray(memory, detailGain);
}

} // namespace hdr
