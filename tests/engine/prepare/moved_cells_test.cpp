// SPDX-License-Identifier: MIT
#include "engine/prepare/moved_cells.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <numeric>
#include <random>
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

TEST(MovedCells, HoldWhatAppearsAndNothingElse) {
    const Picture reference = paint([](int, int) { return 80; });
    const Picture other = paint([](int x, int y) { return inside(x, y, {20, 12, 28, 24}) ? 110 : 80; });
    const auto cells = movedCells(reference, other);
    for (int y = 0; y < kRows; y++)
        for (int x = 0; x < kColumns; x++)
            EXPECT_EQ(cells[static_cast<size_t>(y * kColumns + x)] == 255, inside(x, y, {6, 4, 8, 7}))
                << x << ' ' << y;
    // Only what both exposures can show counts.
    EXPECT_EQ(countSet(movedCells(reference, other, 6, {28, 0, kWidth, kHeight})), 0);
}

TEST(MovedCells, NeedAThresholdThatTheLevelLowersAndAPatch) {
    const auto changeBy = [](int difference, Rect area) {
        return paint([=](int x, int y) { return inside(x, y, area) ? 80 + difference : 80; });
    };
    const Picture reference = changeBy(0, {});
    const Rect patch = {20, 12, 28, 24};
    // 80 / 16 + 16 - level is 15 at level 6 and 11 at level 10; four fifths of it are too little.
    EXPECT_EQ(countSet(movedCells(reference, changeBy(12, patch), 6)), 0);
    EXPECT_GT(countSet(movedCells(reference, changeBy(13, patch), 6)), 0);
    EXPECT_GT(countSet(movedCells(reference, changeBy(-13, patch), 6)), 0);
    EXPECT_EQ(countSet(movedCells(reference, changeBy(8, patch), 10)), 0);
    EXPECT_GT(countSet(movedCells(reference, changeBy(9, patch), 10)), 0);
    EXPECT_EQ(countSet(movedCells(reference, changeBy(90, {20, 12, 27, 13}), 10)), 0);
    EXPECT_GT(countSet(movedCells(reference, changeBy(90, {20, 12, 28, 13}), 10)), 0);
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

TEST(MovedCells, NeverShrinkWithTheLevel) {
    std::mt19937 random(5);
    for (int round = 0; round < 20; round++) {
        const int strength = 4 + 3 * round;
        const Picture reference = paint([&](int x, int) { return 40 + 2 * x; });
        Picture other = reference;
        for (uint8_t &level : other)
            level =
                static_cast<uint8_t>(level + static_cast<int>(random() % static_cast<unsigned>(strength)));
        auto before = movedCells(reference, other, 0);
        for (int level = 1; level <= 10; level++) {
            const auto cells = movedCells(reference, other, level);
            for (size_t i = 0; i < cells.size(); i++)
                EXPECT_GE(cells[i], before[i]);
            before = cells;
        }
    }
}

} // namespace
} // namespace hdr
