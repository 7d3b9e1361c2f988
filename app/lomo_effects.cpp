// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/lomo_effects.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <vector>

#include "app/art_table.h"
#include "app/bands.h"

namespace tristop {
namespace {

uint8_t clampToByte(int32_t value) {
    return static_cast<uint8_t>(std::clamp(value, 0, 255));
}

// 32-bit arithmetic that wraps around.
int32_t wrapMul(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}
int32_t wrapAdd(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

/// Calls change(pixel, x, y) for every pixel, on several threads; false for a null picture.
template <typename Change>
bool forEachPixel(uint8_t *bgr, int32_t width, int32_t height, int32_t lineBytes, Change change) {
    if (bgr == nullptr)
        return false;
    forEachBand(height, [=](int64_t first, int64_t end) {
        for (auto y = static_cast<int32_t>(first); y < end; ++y) {
            uint8_t *pixel = bgr + static_cast<ptrdiff_t>(y) * lineBytes;
            for (int32_t x = 0; x < width; ++x, pixel += 3)
                change(pixel, x, y);
        }
    });
    return true;
}

std::array<uint8_t, 256> contrastTable(int32_t contrast) {
    // Going up to 1 and back rounds the factor to a multiple of 2^-23 or 2^-24.
    const float k = ((static_cast<float>(contrast) / 200.0f) + 1.0f) - 1.0f;
    std::array<uint8_t, 256> table;
    for (int32_t i = 0; i < 256; ++i) {
        const bool dark = i < 128;
        const int32_t distance = std::abs(i - (dark ? 64 : 192));
        const auto change = static_cast<int32_t>(static_cast<float>(64 - distance) * k);
        table[static_cast<size_t>(i)] = static_cast<uint8_t>(dark ? i - change : i + change);
    }
    return table;
}

/// Luminance and chrominance of a colour in units of 1 (`y`, `u`, `v`) and of 1/1024 (`scaledY`).
struct Yuv {
    Yuv(int32_t r, int32_t g, int32_t b)
        : scaledY(306 * r + 601 * g + 117 * b), y(scaledY >> 10), u((513 * b - 340 * g - 173 * r) >> 10),
          v((512 * r - 429 * g - 83 * b) >> 10) {}

    int32_t scaledY, y, u, v;
};

} // namespace

bool lomoContrastAndSaturation(uint8_t *bgr, int32_t width, int32_t height, int32_t lineBytes,
                               int32_t contrast, int32_t saturation) {
    if (contrast != 0) {
        const auto table = contrastTable(contrast);
        forEachPixel(bgr, width, height, lineBytes, [&table](uint8_t *pixel, int32_t, int32_t) {
            for (size_t i = 0; i < 3; ++i)
                pixel[i] = table[pixel[i]];
        });
    }
    if (saturation == 0)
        return bgr != nullptr;
    if (saturation < -100 || saturation > 100)
        return false;

    std::array<int32_t, 256> largestShare, ownShare; // in 1/128
    for (int64_t j = 0; j < 256; ++j) {
        const auto share = static_cast<int32_t>((50 - 128 * j * saturation) / 100);
        largestShare[static_cast<size_t>(j)] = share;
        ownShare[static_cast<size_t>(j)] = static_cast<int32_t>(128 * j) - share;
    }
    return forEachPixel(bgr, width, height, lineBytes, [&](uint8_t *pixel, int32_t, int32_t) {
        const uint8_t largest = std::max({pixel[0], pixel[1], pixel[2]});
        const uint8_t smallest = std::min({pixel[0], pixel[1], pixel[2]});
        if (largest == smallest)
            return;
        for (size_t i = 0; i < 3; ++i)
            pixel[i] = clampToByte((ownShare[pixel[i]] + largestShare[largest]) >> 7);
    });
}

bool lomoArt(uint8_t *bgr, int32_t width, int32_t height, int32_t lineBytes) {
    // The three output channels side by side in one word: a weighted sum of nodes stays below 2^20.
    constexpr int kLaneBits = 21;
    const ArtTable &table = artTable();
    std::vector<uint64_t> nodes(kArtNodes);
    for (size_t i = 0; i < kArtNodes; ++i)
        nodes[i] = table[0][i] | uint64_t{table[1][i]} << kLaneBits | uint64_t{table[2][i]} << 2 * kLaneBits;

    return forEachPixel(bgr, width, height, lineBytes, [&nodes](uint8_t *pixel, int32_t, int32_t) {
        const auto blend = [](uint64_t low, uint64_t high, uint64_t fraction) {
            return low * (16 - fraction) + high * fraction;
        };
        const uint64_t fb = pixel[0] & 15, fg = pixel[1] & 15, fr = pixel[2] & 15;
        const uint64_t *node = &nodes[artNode(pixel[2] >> 4, pixel[1] >> 4, pixel[0] >> 4)];
        const auto greenBlue = [&](const uint64_t *corner) {
            return blend(blend(corner[0], corner[1], fb),
                         blend(corner[artNode(0, 1, 0)], corner[artNode(0, 1, 1)], fb), fg);
        };
        const uint64_t sum = blend(greenBlue(node), greenBlue(node + artNode(1, 0, 0)), fr);
        for (size_t i = 0; i < 3; ++i)
            pixel[i] = static_cast<uint8_t>(sum >> (i * kLaneBits + 12));
    });
}

bool lomoBlackAndWhite(uint8_t *bgr, int32_t width, int32_t height, int32_t lineBytes) {
    return forEachPixel(bgr, width, height, lineBytes, [](uint8_t *pixel, int32_t, int32_t) {
        const uint32_t y = (601u * pixel[1] + 306u * pixel[2] + 117u * pixel[0]) >> 10;
        std::fill_n(pixel, 3, static_cast<uint8_t>(y));
    });
}

bool lomoLens(uint8_t *bgr, int32_t width, int32_t height, int32_t lineBytes, uint8_t lensRed,
              uint8_t lensGreen, uint8_t lensBlue, int32_t opacity, bool keepBrightness) {
    if (opacity == 0)
        return bgr != nullptr;
    const Yuv lens(lensRed, lensGreen, lensBlue);
    const auto lensShare = static_cast<int32_t>(static_cast<int64_t>(opacity * 10.24 + 0.5)); // of 1024
    const int32_t ownShare = wrapAdd(1024, wrapMul(lensShare, -1));
    const auto mixed = [=](int32_t own, int32_t throughLens) {
        return wrapAdd(wrapMul(own, ownShare), wrapMul(throughLens, lensShare));
    };
    return forEachPixel(bgr, width, height, lineBytes, [=](uint8_t *pixel, int32_t, int32_t) {
        const Yuv color(pixel[2], pixel[1], pixel[0]);
        int32_t u = mixed(color.u, (color.u * lens.y + color.y * lens.u) >> 8) >> 10;
        int32_t v = mixed(color.v, (color.v * lens.y + color.y * lens.v) >> 8) >> 10;
        int32_t scaledY; // in 1/1024, whole
        if (keepBrightness) {
            const int32_t protection = std::max(((3 * color.y) >> 1) - 128, 0);
            u = wrapAdd(wrapMul(256 - protection, u), protection * color.u) >> 8;
            v = wrapAdd(wrapMul(256 - protection, v), protection * color.v) >> 8;
            scaledY = color.scaledY & 0x7ffffc00;
        } else {
            scaledY = mixed(color.y, (color.y * lens.y) >> 8) & ~0x3ff;
        }
        pixel[2] = clampToByte(wrapAdd(wrapMul(1437, v), scaledY) >> 10);
        pixel[1] = clampToByte(wrapAdd(wrapAdd(wrapMul(-731, v), wrapMul(-352, u)), scaledY) >> 10);
        pixel[0] = clampToByte(wrapAdd(wrapMul(1812, u), scaledY) >> 10);
    });
}

bool lomoVignette(uint8_t *bgr, int32_t width, int32_t height, int32_t lineBytes, int32_t strength) {
    const int64_t centerX = (int64_t{width} + 1) >> 1;
    const int64_t centerY = (int64_t{height} + 1) >> 1;
    const int64_t corner = centerX * centerX + centerY * centerY; // squared distance
    if (corner == 0)
        return bgr != nullptr;
    const int shift = std::max(static_cast<int>(std::bit_width(static_cast<uint64_t>(corner))) - 12, 0);

    std::vector<uint16_t> factors(static_cast<size_t>(corner >> shift) + 1); // in 1/1024
    for (size_t i = 0; i < factors.size(); ++i) {
        const double exponent =
            static_cast<double>(i << shift) / static_cast<double>(corner) * (strength * -0.02);
        factors[i] = static_cast<uint16_t>(std::min(std::pow(4.0, exponent) * 1024 + 0.5, 65535.0));
    }
    return forEachPixel(bgr, width, height, lineBytes, [&](uint8_t *pixel, int32_t x, int32_t y) {
        const int64_t dx = x - centerX, dy = y - centerY;
        const uint32_t factor = factors[static_cast<size_t>((dx * dx + dy * dy) >> shift)];
        for (size_t i = 0; i < 3; ++i)
            pixel[i] = static_cast<uint8_t>((pixel[i] * factor) >> 10);
    });
}

} // namespace tristop
