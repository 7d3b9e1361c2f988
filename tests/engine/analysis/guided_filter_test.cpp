// SPDX-License-Identifier: MIT
#include "engine/analysis/guided_filter.h"

#include "engine/core/plane.h"
#include "tests/support/scarce_memory.h"
#include "tests/support/windows.h"

#include <algorithm>
#include <random>
#include <vector>

namespace hdr {
namespace {

/// A guide or 8-bit target of an odd pitch.
struct Picture {
    std::vector<uint8_t> bytes;
    Offscreen record;

    template <typename Draw>
    Picture(int width, int height, Draw draw)
        : bytes(static_cast<size_t>((width + 3) * height), 99), record{HDR_FORMAT_YUV444,
                                                                       width,
                                                                       height,
                                                                       {bytes.data()},
                                                                       {width + 3}} {
        for (int y = 0; y < height; y++)
            for (int x = 0; x < width; x++)
                at(x, y) = static_cast<uint8_t>(draw(x, y));
    }
    Picture(const Picture &) = delete;
    Picture &operator=(const Picture &) = delete;
    uint8_t &at(int x, int y) const { return planeOf(record)(x, y); }
};

struct Variant {
    bool isByte;
    bool isFloating;
};

/// The filter straight from its definition, a window at a time.
std::vector<int> filterDirectly(const Picture &guide, const std::vector<int> &target, int radius,
                                double epsilon, Variant variant) {
    const int width = guide.record.i32Width, height = guide.record.i32Height;
    const int64_t count = (2 * radius + 1) * (2 * radius + 1);
    const auto at = [width](auto &plane, int x, int y) -> auto & {
        return plane[static_cast<size_t>(y * width + x)];
    };
    std::vector<int64_t> slopes(target.size()), offsets(target.size());
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++) {
            const auto sum = [&](auto quantity) {
                return test::windowSum(width, height, x, y, radius, [&](int column, int row) {
                    return quantity(guide.at(column, row), at(target, column, row));
                });
            };
            const int64_t si = sum([](int i, int) { return i; }), sp = sum([](int, int p) { return p; });
            const int64_t sip = sum([](int i, int p) { return i * p; });
            const int64_t sii = sum([](int i, int) { return i * i; });
            int64_t &slope = at(slopes, x, y), &offset = at(offsets, x, y);
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
    std::vector<int> result;
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++) {
            const auto mean = [&](const std::vector<int64_t> &plane) {
                return test::windowSum(width, height, x, y, radius,
                                       [&](int column, int row) { return at(plane, column, row); }) /
                       count;
            };
            const int64_t scaled = guide.at(x, y) * mean(slopes);
            const int64_t q =
                variant.isFloating ? (scaled + mean(offsets) * 64) >> 10 : (scaled + mean(offsets)) >> 8;
            result.push_back(variant.isByte ? static_cast<int>(std::clamp<int64_t>(q, 0, 255))
                                            : static_cast<int16_t>(q));
        }
    return result;
}

/// Runs one variant, in place or into a plane that holds 77 everywhere.
std::vector<int> filter(const Picture &guide, const std::vector<int> &target, int radius, double epsilon,
                        Variant variant, bool isInPlace, const Rect *rectangle) {
    const int width = guide.record.i32Width, height = guide.record.i32Height;
    std::vector<int> result;
    if (variant.isByte) {
        Picture input(width, height,
                      [&](int x, int y) { return target[static_cast<size_t>(y * width + x)]; });
        Picture other(width, height, [](int, int) { return 77; });
        Picture &output = isInPlace ? input : other;
        // The epsilon of bytes is truncated.
        EXPECT_EQ(guided_filter_u8(nullptr, &guide.record, &input.record, radius, rectangle, &output.record,
                                   epsilon + 0.75),
                  HDR_OK);
        for (int y = 0; y < height; y++)
            result.insert(result.end(), &output.at(0, y), &output.at(0, y) + width);
    } else {
        std::vector<int16_t> input(target.begin(), target.end()), other(target.size(), 77);
        std::vector<int16_t> &output = isInPlace ? input : other;
        EXPECT_EQ(guided_filter_s16(nullptr, &guide.record, input.data(), radius, rectangle, output.data(),
                                    variant.isFloating, epsilon),
                  HDR_OK);
        result.assign(output.begin(), output.end());
    }
    return result;
}

TEST(GuidedFilter, EqualsItsDefinitionInsideTheRectangle) {
    std::mt19937 random(3);
    const auto between = [&random](int low, int high) {
        return std::uniform_int_distribution<int>(low, high)(random);
    };
    constexpr int kSizes[][2]{{1, 1}, {6, 1}, {1, 9}, {3, 3}, {7, 10}, {45, 27}, {20, 70}};
    for (Variant variant : {Variant{true, true}, {false, true}, {false, false}})
        for (auto [width, height] : kSizes)
            for (int radius : {0, 1, 3, 16})
                for (int content = 0; content < 5; content++) {
                    // Noise, edges, saturated and empty regions, a flat guide, and numbers out of any range.
                    const Picture guide(width, height, [&](int x, int y) {
                        return content == 0   ? between(0, 255)
                               : content == 3 ? 128
                                              : ((x / 5 + y / 4) % 2 ? 250 : 3) + between(0, 5);
                    });
                    const int limit = variant.isByte ? 255 : 510;
                    std::vector<int> target;
                    for (int i = 0; i < width * height; i++)
                        target.push_back(content == 2 ? (i % width < width / 2 ? 0 : limit)
                                         : content == 4 && !variant.isByte ? between(-32768, 32767)
                                         : content == 1                    ? between(0, 1) * limit
                                                                           : between(0, limit));
                    const auto filtered = filterDirectly(guide, target, radius, 4.0, variant);
                    for (const Rect &area : {Rect{0, 0, width, height},
                                             {width / 4, height / 5, width / 2, height - 1},
                                             {-4, height / 2, width + 9, height + 9},
                                             {width / 2, 0, width / 2, height}})
                        for (bool isInPlace : {false, true}) {
                            std::vector<int> expected = filtered;
                            for (int i = 0; i < width * height; i++) {
                                const int x = i % width, y = i / width;
                                const auto sample = static_cast<size_t>(i);
                                if (x < area.x0 || x >= area.x1 || y < area.y0 || y >= area.y1)
                                    expected[sample] = isInPlace ? target[sample] : 77;
                            }
                            const Rect *rectangle = area.x1 == width ? nullptr : &area;
                            ASSERT_EQ(filter(guide, target, radius, 4.0, variant, isInPlace, rectangle),
                                      expected)
                                << width << " x " << height << " radius " << radius << " content " << content
                                << (variant.isByte ? " bytes" : " words") << variant.isFloating << isInPlace;
                        }
                }
}

TEST(GuidedFilter, FailedAllocationsLeaveTheOutputAndLeakNothing) {
    const Picture guide(12, 9, [](int x, int) { return x; });
    std::vector<int16_t> target(12 * 9, 30);
    target[50] = 400;
    const std::vector<int16_t> before = target;
    const size_t failures = test::countFailures(128, [&](MemContext *memory) {
        const HdrStatus status =
            guided_filter_s16(memory, &guide.record, target.data(), 2, nullptr, target.data(), 1, 4.0);
        EXPECT_EQ(target == before, status == HDR_ERR_NOMEM);
        return status;
    });
    EXPECT_GT(failures, 4u);
}

} // namespace
} // namespace hdr
