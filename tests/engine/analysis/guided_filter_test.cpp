// SPDX-License-Identifier: MIT
#include "engine/analysis/guided_filter.h"

#include "tests/support/arena.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace hdr {
namespace {

/// A guide or 8-bit target of an odd pitch.
struct Picture {
    int width, height, pitch;
    std::vector<uint8_t> bytes;

    Picture(int width, int height)
        : width(width), height(height), pitch(width + 3), bytes(static_cast<size_t>(pitch * height), 99) {}
    uint8_t &at(int x, int y) { return bytes[static_cast<size_t>(y * pitch + x)]; }
    Offscreen record() {
        Offscreen picture{};
        picture.u32PixelArrayFormat = HDR_FORMAT_YUV444;
        picture.i32Width = width;
        picture.i32Height = height;
        picture.ppu8Plane[0] = bytes.data();
        picture.pi32Pitch[0] = pitch;
        return picture;
    }
    template <typename Draw>
    void fill(Draw draw) {
        for (int y = 0; y < height; y++)
            for (int x = 0; x < width; x++)
                at(x, y) = static_cast<uint8_t>(draw(x, y));
    }
};

struct Variant {
    bool isByte;
    bool isFloating;
};

/// The filter straight from its definition, a window at a time.
std::vector<int> filterDirectly(Picture &guide, const std::vector<int> &target, int radius, double epsilon,
                                Variant variant) {
    const int width = guide.width, height = guide.height;
    const int64_t count = (2 * radius + 1) * (2 * radius + 1);
    const auto index = [&](int x, int y) {
        return static_cast<size_t>(std::clamp(y, 0, height - 1) * width + std::clamp(x, 0, width - 1));
    };
    std::vector<int64_t> slopes(target.size()), offsets(target.size());
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++) {
            int64_t si = 0, sp = 0, sip = 0, sii = 0;
            for (int dy = -radius; dy <= radius; dy++)
                for (int dx = -radius; dx <= radius; dx++) {
                    const int64_t i =
                        guide.at(std::clamp(x + dx, 0, width - 1), std::clamp(y + dy, 0, height - 1));
                    const int64_t p = target[index(x + dx, y + dy)];
                    si += i, sp += p, sip += i * p, sii += i * i;
                }
            int64_t &slope = slopes[index(x, y)];
            int64_t &offset = offsets[index(x, y)];
            if (sp < 1 || sp >= (variant.isByte ? 255 : 510) * count) {
                slope = 0;
                offset = sp * 16 / count;
            } else if (variant.isFloating) {
                const auto mean = [count](int64_t sum) {
                    return static_cast<double>(sum) / static_cast<double>(count);
                };
                const double covariance = mean(sip) - mean(sp) * mean(si);
                const double variance = mean(sii) - mean(si) * mean(si);
                const double a = std::clamp(covariance / (variance + epsilon), -32.0, 32.0);
                const double b = std::clamp(mean(sp) - a * mean(si), -4096.0, 4096.0);
                slope = static_cast<int64_t>(a * 1024);
                offset = static_cast<int64_t>(b * 16);
            } else {
                const int64_t mi = si / count, mp = sp / count;
                slope = (sip / count - mp * mi) * 256 / (sii / count + 5 - mi * mi);
                offset = mp * 256 - mi * slope;
            }
        }
    std::vector<int> result(target.size());
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++) {
            int64_t slope = 0, offset = 0;
            for (int dy = -radius; dy <= radius; dy++)
                for (int dx = -radius; dx <= radius; dx++) {
                    slope += slopes[index(x + dx, y + dy)];
                    offset += offsets[index(x + dx, y + dy)];
                }
            slope /= count;
            offset /= count;
            const int64_t i = guide.at(x, y);
            const int64_t q =
                variant.isFloating ? (i * slope + offset * 64) >> 10 : (i * slope + offset) >> 8;
            result[index(x, y)] =
                variant.isByte ? static_cast<int>(std::clamp<int64_t>(q, 0, 255)) : static_cast<int16_t>(q);
        }
    return result;
}

/// Runs one variant, in place or into another plane. Samples outside the rectangle must come back as they
/// were: -1 and 77 stand for them when the output is another plane.
std::vector<int> filter(Picture &guide, const std::vector<int> &target, int radius, double epsilon,
                        Variant variant, bool isInPlace, const Rect *rectangle) {
    const Offscreen guideRecord = guide.record();
    std::vector<int> result(target.size());
    if (variant.isByte) {
        Picture input(guide.width, guide.height), other(guide.width, guide.height);
        input.fill([&](int x, int y) { return target[static_cast<size_t>(y * guide.width + x)]; });
        other.fill([](int, int) { return 77; });
        Picture &output = isInPlace ? input : other;
        const Offscreen targetRecord = input.record();
        Offscreen outputRecord = output.record();
        EXPECT_EQ(guided_filter_u8(nullptr, &guideRecord, &targetRecord, radius, rectangle, &outputRecord,
                                   epsilon + 0.75),
                  HDR_OK);
        for (int y = 0; y < guide.height; y++)
            for (int x = 0; x < guide.width; x++)
                result[static_cast<size_t>(y * guide.width + x)] = output.at(x, y);
    } else {
        std::vector<int16_t> input(target.begin(), target.end()), other(target.size(), -1);
        std::vector<int16_t> &output = isInPlace ? input : other;
        EXPECT_EQ(guided_filter_s16(nullptr, &guideRecord, input.data(), radius, rectangle, output.data(),
                                    variant.isFloating, epsilon),
                  HDR_OK);
        result.assign(output.begin(), output.end());
    }
    return result;
}

constexpr Variant kVariants[]{{true, true}, {false, true}, {false, false}};

TEST(GuidedFilter, EqualsItsDefinition) {
    std::mt19937 random(3);
    const auto between = [&random](int low, int high) {
        return std::uniform_int_distribution<int>(low, high)(random);
    };
    constexpr int kSizes[][2]{{1, 1}, {6, 1}, {1, 9}, {3, 3}, {7, 10}, {45, 27}, {20, 70}};
    for (Variant variant : kVariants)
        for (auto [width, height] : kSizes)
            for (int radius : {0, 1, 3, 16})
                for (int content = 0; content < 5; content++) {
                    const int limit = variant.isByte ? 255 : 510;
                    Picture guide(width, height);
                    std::vector<int> target(static_cast<size_t>(width * height));
                    // Noise, edges, saturated and empty regions, a flat guide, and numbers out of any range.
                    guide.fill([&](int x, int y) {
                        return content == 0   ? between(0, 255)
                               : content == 3 ? 128
                                              : ((x / 5 + y / 4) % 2 ? 250 : 3) + between(0, 5);
                    });
                    for (size_t i = 0; i < target.size(); i++) {
                        const int column = static_cast<int>(i) % width;
                        target[i] = content == 2                      ? (column < width / 2 ? 0 : limit)
                                    : content == 4 && !variant.isByte ? between(-32768, 32767)
                                    : content == 1                    ? between(0, 1) * limit
                                                                      : between(0, limit);
                    }
                    const std::vector<int> expected = filterDirectly(guide, target, radius, 4.0, variant);
                    for (bool isInPlace : {false, true})
                        ASSERT_EQ(filter(guide, target, radius, 4.0, variant, isInPlace, nullptr), expected)
                            << width << " x " << height << " radius " << radius << " content " << content
                            << (variant.isByte ? " bytes" : " words") << variant.isFloating << isInPlace;
                }
}

TEST(GuidedFilter, RectangleLimitsOnlyWhatIsWritten) {
    constexpr int kWidth = 23, kHeight = 19;
    std::mt19937 random(5);
    Picture guide(kWidth, kHeight);
    guide.fill([&](int, int) { return random() % 256; });
    std::vector<int> target(kWidth * kHeight);
    std::generate(target.begin(), target.end(), [&] { return static_cast<int>(random() % 256); });
    for (Variant variant : kVariants) {
        const std::vector<int> whole = filterDirectly(guide, target, 4, 4.0, variant);
        for (const Rect &rectangle : {Rect{5, 3, 12, 17}, Rect{-4, 10, 40, 50}, Rect{8, 8, 8, 12}})
            for (bool isInPlace : {false, true}) {
                const std::vector<int> result = filter(guide, target, 4, 4.0, variant, isInPlace, &rectangle);
                for (int y = 0; y < kHeight; y++)
                    for (int x = 0; x < kWidth; x++) {
                        const auto i = static_cast<size_t>(y * kWidth + x);
                        const bool isInside =
                            x >= rectangle.x0 && x < rectangle.x1 && y >= rectangle.y0 && y < rectangle.y1;
                        const int untouched = isInPlace ? target[i] : variant.isByte ? 77 : -1;
                        ASSERT_EQ(result[i], isInside ? whole[i] : untouched) << x << ", " << y;
                    }
            }
    }
}

TEST(GuidedFilter, FailedAllocationsLeaveTheOutputAndLeakNothing) {
    constexpr int kWidth = 12, kHeight = 9;
    Picture guide(kWidth, kHeight);
    const Offscreen guideRecord = guide.record();
    HdrStatus status = HDR_ERR_NOMEM;
    for (size_t bytes = 64; status != HDR_OK; bytes += 256) {
        test::Arena arena(bytes);
        std::vector<int16_t> target(kWidth * kHeight, 30);
        target[50] = 400;
        const std::vector<int16_t> before = target;
        status =
            guided_filter_s16(arena.memory(), &guideRecord, target.data(), 2, nullptr, target.data(), 1, 4.0);
        EXPECT_TRUE(arena.isEmpty());
        EXPECT_EQ(target == before, status == HDR_ERR_NOMEM);
        ASSERT_TRUE(status == HDR_OK || status == HDR_ERR_NOMEM);
    }
}

} // namespace
} // namespace hdr
