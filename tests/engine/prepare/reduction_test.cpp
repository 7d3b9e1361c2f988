// SPDX-License-Identifier: MIT
#include "engine/prepare/reduction.h"

#include "engine/core/memory.h"
#include "engine/core/plane.h"
#include "tests/support/arena.h"
#include "tests/support/picture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <numeric>
#include <vector>

namespace hdr {
namespace {

using test::Picture;

constexpr std::array<uint32_t, 6> kFormats = {0x501, 0x601, 0x603, 0x801, 0x802, 0x803};

/// The nine samples of a channel (Y, U, V) in the block at (x, y), in row order.
std::array<int, 9> lattice(const Offscreen &picture, int channel, int x, int y) {
    const uint32_t format = picture.u32PixelArrayFormat;
    const auto at = [&](int plane, int byte, int row) {
        return static_cast<int>(picture.ppu8Plane[plane][row * picture.pi32Pitch[plane] + byte]);
    };
    std::array<int, 9> samples;
    for (int i = 0; i < 9; i++) {
        const int row = y + i / 3 * 3;
        const int third = i % 3;
        const int chromaColumn = x / 2 + std::array{0, 1, 3}[static_cast<size_t>(third)];
        int &sample = samples[static_cast<size_t>(i)];
        if (format == 0x501)
            sample = at(0, 4 * chromaColumn + std::array{0, 1, 3}[static_cast<size_t>(channel)], row);
        else if (channel == 0)
            sample = at(0, x + 3 * third, row);
        else if (format == 0x601)
            sample = at(channel, chromaColumn, row / 2);
        else if (format == 0x603)
            sample = at(channel, chromaColumn, row);
        else
            sample = at(1, 2 * chromaColumn + (format == 0x802 ? 2 - channel : channel - 1),
                        format == 0x803 ? row : row / 2);
    }
    return samples;
}

TEST(Reduction, EveryFormatAgainstItsLattice) {
    for (uint32_t format : kFormats)
        for (const auto &[width, height] : {std::pair{48, 32}, {53, 39}, {100, 107}}) {
            const Picture picture(format, width, height, test::noise(format));
            const Region whole = {0, 0, width - 1, height - 1}, part = {6, 3, width - 2, height - 1};
            for (const Region &region : {whole, part}) {
                Offscreen reduced{};
                ASSERT_EQ(
                    reduceToWorking(nullptr, &picture.record, &reduced, region.x0 ? &region : nullptr, 8, 1),
                    HDR_OK);
                EXPECT_EQ(reduced.u32PixelArrayFormat, 0x604u);
                ASSERT_EQ(reduced.i32Width, (region.x1 + 1 - region.x0) / 16 * 2);
                ASSERT_EQ(reduced.i32Height, (region.y1 + 1 - region.y0) / 16 * 2);
                for (int channel = 0; channel < 3; channel++) {
                    EXPECT_EQ(reduced.pi32Pitch[channel], reduced.i32Width);
                    for (int y = 0; y < reduced.i32Height; y++)
                        for (int x = 0; x < reduced.i32Width; x++) {
                            const auto samples =
                                lattice(picture.record, channel, region.x0 + 8 * x, region.y0 + 8 * y);
                            int sum = std::accumulate(samples.begin(), samples.end() - 1, 0);
                            if (format == 0x501)
                                sum -= sum % 8;
                            sum += samples[8];
                            EXPECT_EQ(planeOf(reduced, channel)(x, y), sum * 116508 / 1048576)
                                << std::hex << format << std::dec << " channel " << channel << " at " << x
                                << ", " << y;
                        }
                }
                engineFree(nullptr, reduced.ppu8Plane[0]);
            }
        }
}

TEST(Reduction, ConstantBlocksLoseALevel) {
    for (uint32_t format : kFormats)
        for (int level : {0, 1, 100, 255}) {
            const Picture picture(format, 16, 16, [=] { return static_cast<uint8_t>(level); });
            Offscreen reduced{};
            ASSERT_EQ(reduceToWorking(nullptr, &picture.record, &reduced, nullptr, 8, 1), HDR_OK);
            for (int i = 0; i < 12; i++)
                EXPECT_EQ(reduced.ppu8Plane[0][i], std::max(level - 1, 0));
            engineFree(nullptr, reduced.ppu8Plane[0]);
        }
}

TEST(Reduction, WritesOnlyItsPixels) {
    const Picture picture(0x501, 40, 35, [] { return uint8_t{200}; });
    std::vector<uint8_t> bytes(3 * 7 * 4, 99);
    Offscreen reduced = {0x604, 4, 4, {bytes.data(), bytes.data() + 28, bytes.data() + 56}, {7, 7, 7}};
    ASSERT_EQ(reduceToWorking(nullptr, &picture.record, &reduced, nullptr, 8, 0), HDR_OK);
    for (size_t i = 0; i < bytes.size(); i++)
        EXPECT_EQ(bytes[i], i % 7 < 4 ? 199 : 99);

    std::fill(bytes.begin(), bytes.end(), uint8_t{99});
    EXPECT_EQ(reduceToWorking(nullptr, &picture.record, &reduced, nullptr, 0, 0), HDR_ERR_PARAM);
    EXPECT_EQ(reduceToWorking(nullptr, &picture.record, &reduced, nullptr, 1 << 30, 1), HDR_OK);
    Offscreen unknown = picture.record;
    unknown.u32PixelArrayFormat = 0x502;
    EXPECT_EQ(reduceToWorking(nullptr, &unknown, &reduced, nullptr, 8, 0), HDR_OK);
    EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 99), static_cast<ptrdiff_t>(bytes.size()));

    test::Arena arena(40); // 3 x 4 x 4 bytes do not fit
    EXPECT_EQ(reduceToWorking(arena.memory(), &picture.record, &reduced, nullptr, 8, 1), HDR_ERR_NOMEM);
    EXPECT_EQ(reduced.ppu8Plane[0], bytes.data());
}

} // namespace
} // namespace hdr
