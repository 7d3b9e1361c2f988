// SPDX-License-Identifier: MIT
#include "engine/analysis/chroma_weights.h"

#include "engine/core/context.h"
#include "tests/support/arena.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace hdr {
namespace {

/// Three luminance pictures of an odd pitch (input 0 bright, 1 dark, 2 middle) and what the stage makes of
/// them.
class ChromaWeightsTest : public testing::Test {
protected:
    static constexpr int kBright = 0, kDark = 1, kMid = 2;

    ~ChromaWeightsTest() override { context.chromaWeights.release(nullptr); }

    template <typename Draw>
    void draw(int newWidth, int newHeight, Draw level) {
        width = newWidth;
        height = newHeight;
        for (int input = 0; input < 3; input++) {
            luma[input].assign(static_cast<size_t>(pitch() * height), 255);
            for (int y = 0; y < height; y++)
                for (int x = 0; x < width; x++)
                    luma[input][static_cast<size_t>(y * pitch() + x)] =
                        static_cast<uint8_t>(level(input, x, y));
            records[input] = {};
            records[input].i32Width = width;
            records[input].i32Height = height;
            records[input].ppu8Plane[0] = luma[input].data();
            records[input].pi32Pitch[0] = pitch();
        }
    }

    HdrStatus run(MemContext *memory = nullptr) {
        context.chromaWeights.release(memory);
        context.preparation.brightIndex = kBright;
        context.preparation.darkIndex = kDark;
        context.preparation.midIndex = kMid;
        Offscreen *const pictures[]{&records[0], &records[1], &records[2]};
        return chroma_weight_stage(memory, &context, pictures);
    }

    int pitch() const { return width + 5; }
    size_t at(int x, int y) const { return static_cast<size_t>(y * width + x); }
    int level(int input, int x, int y) const { return luma[input][static_cast<size_t>(y * pitch() + x)]; }

    /// Rounded means over windows of a packed plane.
    std::vector<int> boxMean(const std::vector<int> &plane, int radius) const {
        const int side = 2 * radius + 1;
        const int reciprocal = (side * side + 131072) / (2 * side * side);
        std::vector<int> means(plane.size());
        for (int y = 0; y < height; y++)
            for (int x = 0; x < width; x++) {
                int sum = 0;
                for (int dy = -radius; dy <= radius; dy++)
                    for (int dx = -radius; dx <= radius; dx++)
                        sum += plane[at(std::clamp(x + dx, 0, width - 1), std::clamp(y + dy, 0, height - 1))];
                means[at(x, y)] = (sum * reciprocal + 32768) >> 16;
            }
        return means;
    }
    void expectMapsFromDefinition() const;

    int width = 0, height = 0;
    std::vector<uint8_t> luma[3];
    Offscreen records[3];
    HdrContext context{};
};

void ChromaWeightsTest::expectMapsFromDefinition() const {
    const std::vector<int> zeros(static_cast<size_t>(width * height), 0);
    std::vector<int> gradient = zeros, detail = zeros, edges = zeros;
    std::array<std::vector<int>, 3> raw{zeros, zeros, zeros};
    const auto isInner = [this](int x, int y) { return x > 0 && y > 0 && x < width - 1 && y < height - 1; };
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++) {
            if (!isInner(x, y))
                continue;
            for (int input = 0; input < 3; input++)
                gradient[at(x, y)] =
                    std::max(gradient[at(x, y)], (std::abs(level(input, x, y - 1) - level(input, x, y + 1)) +
                                                  std::abs(level(input, x - 1, y) - level(input, x + 1, y))) /
                                                     2);
            const int mid = level(kMid, x, y);
            raw[kDark][at(x, y)] = std::min(2 * mid, 128);
            raw[kBright][at(x, y)] = mid > 192 ? 512 - 2 * mid : 128;
            raw[kMid][at(x, y)] = mid < 64 ? 64 + mid : mid > 192 ? 320 - mid : 128;
        }
    gradient = boxMean(gradient, 4);
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++) {
            const int strength = gradient[at(x, y)];
            if (!isInner(x, y) || strength < 5)
                continue;
            constexpr int kSteps[]{63, 126, 189, 252};
            detail[at(x, y)] = strength > 8 ? 255 : kSteps[strength - 5];
            if (strength > 8 && level(kMid, x, y) >= 193)
                edges[at(x, y)] = 255;
        }
    const std::vector<int> spread = boxMean(edges, 8);
    for (size_t i = 0; i < edges.size(); i++)
        if (spread[i] >= 2)
            edges[i] = 256;
    edges = boxMean(edges, 8);
    const int16_t *const maps[3]{context.chromaWeights.chromaWeightBright,
                                 context.chromaWeights.chromaWeightDark,
                                 context.chromaWeights.chromaWeightMid};
    for (int map = 0; map < 3; map++) {
        const std::vector<int> smooth = boxMean(raw[map], 16);
        for (int y = 0; y < height; y++)
            for (int x = 0; x < width; x++) {
                int expected = smooth[at(x, y)];
                if (x >= 4 && y >= 4 && x <= width - 5 && y <= height - 5) {
                    const int alpha = std::min(256, 4 * edges[at(x, y)]);
                    expected = (raw[map][at(x, y)] * alpha + expected * (256 - alpha) + 128) / 256;
                }
                ASSERT_EQ(maps[map][at(x, y)], expected) << "map " << map << " at " << x << ", " << y;
                ASSERT_EQ(context.chromaWeights.detailMask[at(x, y)], detail[at(x, y)]) << x << ", " << y;
            }
    }
}

TEST_F(ChromaWeightsTest, EqualsItsDefinition) {
    std::mt19937 random(11);
    // A smooth slope with a highlight behind a sharp edge, noise of several strengths, and small pictures.
    draw(58, 41, [&](int input, int x, int y) {
        return (x > 40 && y > 12 && y < 30 ? (y < 20 ? 193 : 192) : 3 * x) / (input == kDark ? 2 : 1);
    });
    ASSERT_EQ(run(), HDR_OK);
    expectMapsFromDefinition();
    for (auto [columns, rows] : {std::array{45, 52}, {33, 9}, {9, 9}, {30, 8}, {8, 30}, {3, 3}, {2, 2}})
        for (unsigned noise : {9u, 18u, 256u}) {
            draw(columns, rows, [&](int, int, int) { return 255u - random() % noise; });
            ASSERT_EQ(run(), HDR_OK);
            expectMapsFromDefinition();
        }
}

TEST_F(ChromaWeightsTest, FailedAllocationsRecordAndLeakNothing) {
    draw(12, 12, [](int, int x, int y) { return 20 * x + y; });
    // Four maps and three temporaries of 288 bytes; the filters' tables may fail without harm.
    for (size_t bytes : {64u, 296u, 904u, 1200u, 2000u, 2200u, 4000u, 100000u}) {
        test::Arena arena(bytes);
        const HdrStatus status = run(arena.memory());
        EXPECT_EQ(status, bytes < 2200 ? HDR_ERR_NOMEM : HDR_OK) << bytes;
        EXPECT_EQ(context.chromaWeights.detailMask == nullptr, status == HDR_ERR_NOMEM);
        context.chromaWeights.release(arena.memory());
        EXPECT_EQ(context.chromaWeights.chromaWeightDark, nullptr);
        EXPECT_TRUE(arena.isEmpty()) << bytes;
    }
}

} // namespace
} // namespace hdr
