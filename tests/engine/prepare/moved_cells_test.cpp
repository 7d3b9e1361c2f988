// SPDX-License-Identifier: MIT
#include "engine/prepare/moved_cells.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <numeric>
#include <vector>

namespace hdr {
namespace {

constexpr int kWidth = 64, kHeight = 48;
constexpr int kColumns = kWidth / 4 + 2, kRows = kHeight / 4 + 2;

using Picture = std::vector<uint8_t>;

Picture paint(const std::function<int(int, int)> &level) {
    Picture made;
    for (int y = 0; y < kHeight; y++)
        for (int x = 0; x < kWidth; x++)
            made.push_back(static_cast<uint8_t>(std::clamp(level(x, y), 0, 255)));
    return made;
}

std::vector<uint8_t> identity() {
    std::vector<uint8_t> tones(256);
    std::iota(tones.begin(), tones.end(), uint8_t{0});
    return tones;
}

std::vector<uint8_t> movedCells(const Picture &reference, const Picture &registered, int level = 6,
                                const Rect &valid = {0, 0, kWidth, kHeight},
                                const std::vector<uint8_t> &tones = identity()) {
    std::vector<uint8_t> moved(static_cast<size_t>(kColumns * kRows), 77);
    const auto view = [](const Picture &picture) {
        return Plane<const uint8_t>(picture.data(), kWidth, kHeight);
    };
    EXPECT_EQ(findMovedCells(nullptr, view(reference), view(registered), view(registered), tones.data(),
                             valid, level, Plane<uint8_t>(moved.data(), kColumns, kRows)),
              HDR_OK);
    EXPECT_TRUE(std::ranges::all_of(moved, [](uint8_t cell) { return cell == 0 || cell == 255; }));
    return moved;
}

long countSet(const std::vector<uint8_t> &cells) {
    return std::ranges::count(cells, 255);
}

bool inside(int x, int y, const Rect &area) {
    return x >= area.x0 && x < area.x1 && y >= area.y0 && y < area.y1;
}

/// Level 80 with an area that differs by `sure`, amid one that differs by `weak`.
Picture changed(const Rect &area, int sure, const Rect &around = {}, int weak = 0) {
    return paint([&](int x, int y) {
        return 80 + (inside(x, y, area) ? sure : inside(x, y, around) ? weak : 0);
    });
}

TEST(MovedCells, HoldWhatAppearsAndNothingElse) {
    const Picture reference = changed({}, 0);
    const Rect area = {22, 14, 28, 24};
    // At a threshold of 15 a difference of 8 extends the change, up to three pixels, and one of 7 does not.
    for (const auto &[weak, reach] : {std::pair{8, 3}, {7, 0}}) {
        const auto cells = movedCells(reference, changed(area, 30, {10, 4, 50, 40}, weak));
        for (int y = 0; y < kRows; y++)
            for (int x = 0; x < kColumns; x++) {
                int pixels = 0;
                for (int i = 0; i < 16; i++)
                    pixels += inside(4 * x - 4 + i % 4, 4 * y - 4 + i / 4,
                                     {area.x0 - reach, area.y0 - reach, area.x1 + reach, area.y1 + reach});
                EXPECT_EQ(cells[static_cast<size_t>(y * kColumns + x)] == 255, pixels >= 2) << x << ' ' << y;
            }
    }
    // Only what both exposures can show counts, and nothing that is seen on the outermost pixels alone.
    EXPECT_EQ(countSet(movedCells(reference, changed(area, 30), 6, {28, 0, kWidth, kHeight})), 0);
    EXPECT_EQ(countSet(movedCells(reference, changed({0, 8, 1, 40}, 60))), 0);
}

TEST(MovedCells, NeedAThresholdThatTheLevelLowersAndAPatch) {
    const Picture reference = changed({}, 0);
    const Rect patch = {20, 12, 28, 24};
    const auto finds = [&](int difference, int level, const Rect &area) {
        return countSet(movedCells(reference, changed(area, difference), level)) > 0;
    };
    // 80 / 16 + 16 - level is 15 at level 6 and 11 at level 10; four fifths of it are too little.
    EXPECT_FALSE(finds(12, 6, patch));
    EXPECT_TRUE(finds(13, 6, patch));
    EXPECT_TRUE(finds(-13, 6, patch));
    EXPECT_FALSE(finds(8, 10, patch));
    EXPECT_TRUE(finds(9, 10, patch));
    EXPECT_FALSE(finds(90, 10, {20, 12, 27, 13}));
    EXPECT_TRUE(finds(90, 10, {20, 12, 28, 13}));
    // Where tone matching amplifies noise, a difference has to be larger than that.
    std::vector<uint8_t> steep = identity();
    for (size_t i = 0; i < 256; i++)
        steep[i] = static_cast<uint8_t>(std::min<size_t>(6 * i, 255));
    const Picture shadow = paint([](int, int) { return 30; });
    const Picture darker = paint([&](int x, int y) { return inside(x, y, patch) ? 12 : 30; });
    EXPECT_GT(countSet(movedCells(shadow, darker)), 0);
    EXPECT_EQ(countSet(movedCells(shadow, darker, 6, {0, 0, kWidth, kHeight}, steep)), 0);
}

TEST(MovedCells, LeaveOutEdgesThatAreOffByPartOfAPixelButNotByTwo) {
    const auto stripes = [](double offset) {
        return paint([offset](int x, int) {
            const double phase = (x - offset) / 8;
            return static_cast<int>(120 + 60 * std::clamp(4 * std::sin(phase * 3.14159265), -1.0, 1.0));
        });
    };
    const Picture reference = stripes(0);
    EXPECT_EQ(countSet(movedCells(reference, stripes(0.3), 10)), 0);
    EXPECT_GT(countSet(movedCells(reference, stripes(2), 6)), kColumns);
}

} // namespace
} // namespace hdr
