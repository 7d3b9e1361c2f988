// SPDX-License-Identifier: MIT
// The rendering against a slow renderer that works pixel by pixel from the formulas.
#include "engine/render/bands.h"

#include "tests/support/reduced_run.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <random>
#include <utility>
#include <vector>

namespace hdr {
namespace {

using Grid = std::vector<int32_t>;

/// A random bracket with all maps that the bands read, and the context that holds them.
struct Scene : test::ReducedRun {
    enum Warp { kNone, kWhole, kByRows, kFractional, kMixed };

    int pixelWidth, pixelHeight, cellColumns, cellRows, blockColumns, blockRows, nodeColumns, nodeRows;
    std::array<std::vector<uint8_t>, 3> pictures;
    std::array<Grid, 3> warpX, warpY;                 // whole pixels, by input
    std::array<std::vector<uint16_t>, 3> cellWeights; // mid, dark, bright
    std::vector<int16_t> lines, ghostMask = std::vector<int16_t>(1);
    std::vector<uint16_t> mergeTable = std::vector<uint16_t>(kMergeTableSize);
    std::array<std::array<Grid, 4>, 3> grids; // as the context holds them
    std::array<Offscreen, 3> inputs{};

    Scene(int width, int height, Warp warp, unsigned seed)
        : ReducedRun(width / 16 * 2, height / 16 * 2), pixelWidth(width), pixelHeight(height),
          cellColumns((width + 31) / 32 + 2), cellRows((height + 31) / 32 + 2),
          blockColumns(width / 16 * 2 + 2), blockRows(height / 16 * 2 + 2),
          nodeColumns(((width + 127) >> 8) + 2), nodeRows(((height + 127) >> 8) + 2) {
        random.seed(seed);
        context.smoothingFlag = 1;
        context.scene.curveShiftT = 2;
        context.render.workingRectangle = {0, 0, width & ~7, height & ~1};
        for (int i = 0; i < 32768; i++)
            context.tables.detailGain[i] = static_cast<uint16_t>(i * 9 % 65536);
        context.preparation.gridWidth = cellColumns;
        context.preparation.gridHeight = cellRows;
        makePictures();
        makeWeights();
        fillMaps();
        makeWarps(warp);
        makeMergeTable();
        context.merge.rowWidth = width;
        context.merge.target = inputs[kMid];
        context.merge.ghostMask = ghostMask.data();
        EXPECT_EQ(allocateBandBuffers(nullptr, &context), HDR_OK);
    }
    ~Scene() { context.bands.release(nullptr); }

    int uniform(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); }

    void makePictures() {
        for (size_t k = 0; k < 3; k++) {
            const int pitch = 2 * pixelWidth + 4 * static_cast<int>(k);
            pictures[k].resize(static_cast<size_t>(pitch * (pixelHeight - 1) + 2 * pixelWidth));
            for (uint8_t &byte : pictures[k])
                byte = static_cast<uint8_t>(uniform(0, 255));
            inputs[k] = {HDR_FORMAT_YUY2, pixelWidth, pixelHeight, {pictures[k].data()}, {pitch}};
        }
    }
    void makeWeights() {
        for (size_t k = 0; k < 3; k++) {
            cellWeights[k].assign(static_cast<size_t>(cellColumns * cellRows), 0);
            context.check.cellWeights[k] = cellWeights[k].data();
        }
        for (int row = 0; row < cellRows; row++)
            for (int column = 0; column < cellColumns; column++) {
                if (row % 3 == 0 && (row % 2 == 0 || column < 5)) // whole rows and corners without any
                    continue;
                const int kind = uniform(0, 10); // mostly without one or both of the exposures
                const int dark = kind > 6 ? 0 : uniform(0, 3) ? uniform(0, 256) : 1;
                const int bright = kind < 4 ? 0 : uniform(0, 256 - dark);
                const auto i = static_cast<size_t>(row * cellColumns + column);
                cellWeights[0][i] = static_cast<uint16_t>(kind == 10 ? 0 : 256 - dark - bright);
                cellWeights[1][i] = static_cast<uint16_t>(dark);
                cellWeights[2][i] = static_cast<uint16_t>(kind == 9 ? 0 : bright);
            }
    }
    void fillMaps() {
        makeMaps();
        const auto line = static_cast<size_t>(pixelWidth + 64);
        lines.resize(kCorrectionMapCount * 4 * line);
        for (size_t k = 0; k < kCorrectionMapCount; k++) {
            for (int i = 0; i < blockColumns * blockRows; i++) {
                const int reach = uniform(0, 9) ? 60 : 255;
                context.firstMerge.correctionMaps[k][i] =
                    static_cast<int16_t>((k < 3 ? 256 : 0) + uniform(-reach, reach));
            }
            for (size_t band = 0; band < 4; band++)
                context.lineBuffers.bandLineBuffers[k][band] = &lines[(4 * k + band) * line];
        }
        LocalToneMap &map = context.localToneMap;
        map = {nullptr, pixelWidth / 8, pixelHeight / 8};
        map.map = allocateArray<int16_t>(memory, static_cast<size_t>(map.width * map.height));
        fillRandom(map.map, static_cast<size_t>(map.width * map.height), -500, 4000);
    }
    void makeWarps(Warp warp) {
        context.alignment.warpWidth = nodeColumns;
        context.alignment.warpHeight = nodeRows;
        for (size_t k : {size_t{kDark}, size_t{kBright}}) {
            makeGrid(warp, warpX[k], grids[k][0], grids[k][1]);
            makeGrid(warp, warpY[k], grids[k][2], grids[k][3]);
            context.alignment.warpX[k] = grids[k][0].data();
            context.merge.warpDifferenceX[k] = grids[k][1].data();
            context.alignment.warpY[k] = grids[k][2].data();
            context.merge.warpDifferenceY[k] = grids[k][3].data();
        }
    }
    void makeGrid(Warp warp, Grid &pixels, Grid &nodes, Grid &differences) {
        const int shift = warp == kNone ? 0 : uniform(0, 1) ? uniform(-9, 9) : uniform(-70, 70);
        pixels.assign(static_cast<size_t>(nodeColumns * nodeRows), shift);
        differences.assign(pixels.size(), 0);
        int offset = 0;
        for (size_t i = 0; i < pixels.size(); i++) {
            const size_t column = i % static_cast<size_t>(nodeColumns);
            if (column == 0)
                offset = warp == kByRows ? uniform(-6, 6) : 0;
            if (warp == kFractional || (warp == kMixed && column > 1))
                offset = uniform(-6, 6);
            pixels[i] += offset;
            if (column > 0)
                differences[i - 1] = pixels[i] - pixels[i - 1];
            nodes.push_back(256 * pixels[i]);
        }
    }
    void makeMergeTable() {
        for (size_t i = 0; i < 256; i++) {
            mergeTable[kBrightCurve + i] = static_cast<uint16_t>(4 * kGammaExpand[i]);
            mergeTable[kFalloffPart + i] = kFalloff[i];
        }
        for (size_t i = 1; i < 768; i++)
            mergeTable[kReciprocalPart + i] = static_cast<uint16_t>(32768 / i);
        context.merge.smoothingMergeTable = mergeTable.data();
    }

    /// Renders bands that end at the given rows, the last one first, and restores the reference.
    std::vector<uint8_t> render(std::vector<uint32_t> ends) {
        const std::vector<uint8_t> unrendered = pictures[kMid];
        for (size_t i = ends.size(); i-- > 0;) {
            const uint32_t first = i ? ends[i - 1] : 0;
            const HdrBand band = {static_cast<uint32_t>(i), first, ends[i], first};
            EXPECT_EQ(render_band(&band, &context, inputs.data(), nullptr, nullptr), HDR_OK);
        }
        const std::vector<uint8_t> rendered = pictures[kMid];
        std::copy(unrendered.begin(), unrendered.end(), pictures[kMid].begin());
        return rendered;
    }
};

/// Renders a scene pixel by pixel.
class SlowRenderer {
public:
    explicit SlowRenderer(const Scene &scene) : s(scene) {}

    std::vector<uint8_t> render() const {
        std::vector<uint8_t> out = s.pictures[Scene::kMid];
        for (int y = 0; y < (s.pixelHeight & ~1); y++)
            renderRow(y, &out[static_cast<size_t>(y * s.inputs[Scene::kMid].pi32Pitch[0])]);
        return out;
    }

private:
    const Scene &s;
    /// The inputs of the mid, dark and bright exposure.
    const int input[3] = {s.context.preparation.midIndex, s.context.preparation.darkIndex,
                          s.context.preparation.brightIndex};

    static int floorDivide(int64_t value, int64_t by) {
        return static_cast<int>(value >= 0 ? value / by : -((-value + by - 1) / by));
    }
    static int clampTo(int value, int high) { return std::max(0, std::min(value, high)); }
    /// The sum of four samples of a map weighted for a point fx, fy of `size` from the upper left one.
    template <typename Map>
    static int64_t bilinear(const Map &map, int columns, int rows, int c, int r, int fx, int fy, int size) {
        const auto at = [&](int x, int y) {
            return static_cast<int64_t>(
                map[static_cast<size_t>(std::min(y, rows - 1) * columns + std::min(x, columns - 1))]);
        };
        return ((size - fx) * at(c, r) + fx * at(c + 1, r)) * (size - fy) +
               ((size - fx) * at(c, r + 1) + fx * at(c + 1, r + 1)) * fy;
    }
    /// Cell weight of exposure k (0 mid, 1 dark, 2 bright) times 1024, in the cell of column `anchor`.
    int64_t cellValue(int k, int x, int y, int anchor) const {
        const int c = (anchor + 16) / 32;
        const int top = y / 4 * 4;
        return bilinear(s.cellWeights[static_cast<size_t>(k)], s.cellColumns, s.cellRows, c, (top + 16) / 32,
                        x + 16 - 32 * c, (top + 16) % 32, 32);
    }
    bool contributes(int k, int x, int y) const {
        const int start = std::max(0, (x + 16) / 32 * 32 - 16);
        return cellValue(k, start, y, x) != 0 || cellValue(k, start + 1, y, x) != 0;
    }
    int correction(int map, int x, int y) const {
        return floorDivide(bilinear(s.context.firstMerge.correctionMaps[map], s.blockColumns, s.blockRows,
                                    (x + 4) / 8, (y + 4) / 8, (x + 4) % 8, (y + 4) % 8, 8),
                           64);
    }
    int gain(int x, int y) const {
        const auto blockGain = [&](int column, int row) {
            const int last = s.pixelWidth / 8 - 1;
            const int block =
                std::min(row, s.pixelHeight / 8 - 1) * (s.pixelWidth / 8) + std::min(column, last);
            return int{s.context.tables.detailGain[static_cast<uint16_t>(s.context.localToneMap.map[block])]};
        };
        const auto alongRow = [&](int row) {
            return ((8 - x % 8) * blockGain(x / 8, row) + x % 8 * blockGain(x / 8 + 1, row)) / 8;
        };
        return ((8 - y % 8) * alongRow(y / 8) + y % 8 * alongRow(y / 8 + 1)) / 8;
    }
    int byte(int input, int row, int index) const {
        const Offscreen &picture = s.inputs[static_cast<size_t>(input)];
        return picture.ppu8Plane[0][row * picture.pi32Pitch[0] + index];
    }
    int luma(int input, int x, int y) const { return byte(input, y, 2 * x); }
    int chroma(int input, int x, int y, int which) const { return byte(input, y, x / 2 * 4 + 1 + 2 * which); }
    int groupLuma(int input, int x, int y) const {
        return luma(input, x, y) + luma(input, x + 1, y) + luma(input, x + 2, y) + luma(input, x + 3, y);
    }
    /// Samples Y0..Y3, U0, V0, U1, V1 of an input for the group at (x, y).
    std::array<int, 8> resampled(int input, int x, int y) const {
        const auto displacement = [&](const Grid &grid, int atX) {
            const int c = (x + 128) / 256;
            return grid.empty() ? 0
                                : bilinear(grid, s.nodeColumns, s.nodeRows, c, (y + 128) / 256,
                                           atX + 128 - 256 * c, (y + 128) % 256, 256);
        };
        const auto k = static_cast<size_t>(input);
        const int64_t dx = displacement(s.warpX[k], x);
        const int64_t dy = displacement(s.warpY[k], x);
        std::array<int, 8> group;
        int column, row;
        if (dx % 65536 == 0 && dy % 65536 == 0 && displacement(s.warpX[k], x + 1) == dx &&
            displacement(s.warpY[k], x + 1) == dy) {
            const int wholeX = static_cast<int>(dx / 65536), wholeY = static_cast<int>(dy / 65536);
            column = clampTo(x - wholeX, s.pixelWidth - 4);
            row = clampTo(y - wholeY, s.pixelHeight - 1);
            const bool inside = column == x - wholeX && row == y - wholeY;
            const int backX = clampTo(column + wholeX, s.pixelWidth - 4),
                      backY = clampTo(row + wholeY, s.pixelHeight - 1);
            const int lift =
                floorDivide(groupLuma(input, column, row) - groupLuma(Scene::kMid, backX, backY), 4);
            for (int i = 0; i < 4; i++)
                group[static_cast<size_t>(i)] =
                    inside ? luma(input, column + i, row) : clampTo(luma(Scene::kMid, x + i, y) + lift, 255);
        } else {
            const int positionX = 16 * x - floorDivide(dx, 4096);
            const int positionY = 16 * y - floorDivide(dy, 4096);
            column = clampTo(floorDivide(positionX, 16), s.pixelWidth - 5);
            row = clampTo(floorDivide(positionY, 16), s.pixelHeight - 2);
            const int fx = positionX - 16 * floorDivide(positionX, 16);
            const int fy = positionY - 16 * floorDivide(positionY, 16);
            for (int i = 0; i < 4; i++) {
                const int left = column + i;
                group[static_cast<size_t>(i)] =
                    (((16 - fx) * luma(input, left, row) + fx * luma(input, left + 1, row)) * (16 - fy) +
                     ((16 - fx) * luma(input, left, row + 1) + fx * luma(input, left + 1, row + 1)) * fy) /
                    256;
            }
        }
        for (int i = 0; i < 4; i++)
            group[static_cast<size_t>(4 + i)] = chroma(input, column + i / 2 * 2, row, i % 2);
        return group;
    }

    void renderRow(int y, uint8_t *out) const {
        int64_t slots[4] = {}; // numbered from 1, laid out by the span's type
        int previousType = -1;
        for (int x = 0; x < (s.pixelWidth & ~7); x += 4) {
            const int type = contributes(1, x, y) + 2 * contributes(2, x, y);
            if (previousType < 0) {
                slots[1] = slots[2] = slots[3] = 10922;
                if (type == 1 || type == 2)
                    slots[1] = slots[2] = 16383;
            } else if (type != previousType) {
                int64_t dark = slots[1], bright = slots[2], mid = slots[3];
                if (previousType == 2)
                    dark = 0, bright = slots[1], mid = slots[2];
                if (previousType == 1)
                    dark = slots[1], bright = 0, mid = slots[2];
                if (previousType == 0)
                    dark = 0, bright = 0, mid = 32768;
                slots[1] = type == 2 ? bright : dark;
                slots[2] = type == 3 ? bright : mid;
                slots[3] = mid;
            }
            if (type == 0)
                slots[1] = slots[2] = 0;
            previousType = type;
            renderGroup(x, y, type, slots, out);
        }
    }

    void renderGroup(int x, int y, int type, int64_t *slots, uint8_t *out) const {
        std::array<int, 8> samples[3];
        int64_t weight[3] = {}, ramp[3][4];
        int64_t before[3] = {0, type & 1 ? slots[1] : 0, type == 3 ? slots[2] : type == 2 ? slots[1] : 0};
        for (int k = 0; k < 3; k++) {
            if (k && !(type & k))
                continue;
            samples[k] = resampled(input[k], x, y);
            weight[k] =
                (cellValue(k, x, y, x) / 1024 * kFalloff[static_cast<size_t>(samples[k][3])] + 255) / 256;
        }
        const int64_t sum = weight[0] + weight[1] + weight[2];
        const int64_t normalise = sum ? 32768 / sum : 0;
        for (int k : {1, 2}) {
            const int64_t own = weight[k] * normalise, last = before[k];
            ramp[k][0] = (own + 3 * last + 2) / 4;
            ramp[k][1] = (own + last) / 2;
            ramp[k][2] = (3 * own + last + 2) / 4;
            ramp[k][3] = own;
            weight[k] = own;
        }
        for (int i = 0; i < 4; i++)
            ramp[0][i] = 32768 - ramp[1][i] - ramp[2][i];
        const int64_t rest = 32768 - weight[1] - weight[2];
        if (type == 3)
            slots[1] = weight[1], slots[2] = weight[2], slots[3] = rest;
        else if (type)
            slots[1] = weight[type], slots[2] = rest;

        for (int i = 0; i < 4; i++) {
            int64_t level = 0;
            for (int k = 0; k < 3; k++)
                if (!k || (type & k)) {
                    const int corrected =
                        clampTo(samples[k][static_cast<size_t>(i)] + correction(k, x + i, y) - 256, 255);
                    level += 4 * kGammaExpand[corrected] * ramp[k][i];
                }
            const int index = floorDivide(int64_t{gain(x + i % 2, y)} * floorDivide(level, 32768), 4096);
            out[2 * (x + i)] = s.context.tables.contrastCurve8[clampTo(index, 4095)];
        }
        for (int i = 0; i < 4; i++) {
            const int column = x + i / 2 * 2;
            int64_t blend = 0;
            for (int k = 0; k < 3; k++)
                if (!k || (type & k)) {
                    const int offset = correction(3 + 3 * (i % 2) + k, column, k ? y : y / 4 * 4);
                    blend += clampTo(samples[k][static_cast<size_t>(4 + i)] + offset, 255) *
                             ramp[k][i / 2 * 2 + 1];
                }
            out[2 * column + 1 + 2 * (i % 2)] = s.context.tables.sCurve8[blend / 2048];
        }
    }
};

TEST(Bands, MatchSlowRendererForEveryWarp) {
    unsigned seed = 1;
    for (auto [width, height] : {std::pair{424, 290}, {100, 101}, {111, 126}, {137, 150}})
        for (Scene::Warp warp :
             {Scene::kNone, Scene::kWhole, Scene::kByRows, Scene::kFractional, Scene::kMixed}) {
            SCOPED_TRACE(testing::Message()
                         << width << "x" << height << " warp " << warp << " seed " << seed);
            Scene scene(width, height, warp, seed++);
            const std::vector<uint8_t> expected = SlowRenderer(scene).render();
            const auto end = static_cast<uint32_t>(height & ~1);
            ASSERT_EQ(scene.render({end}), expected);
            ASSERT_EQ(scene.render({24, 48, 72, end}), expected);
        }
}

TEST(Bands, ReadTheReferenceAsItWasWhenItIsAlsoTheDarkExposure) {
    Scene scene(136, 100, Scene::kWhole, 77);
    scene.context.preparation.darkIndex = Scene::kMid;
    ASSERT_EQ(scene.render({24, 100}), SlowRenderer(scene).render());
}

TEST(Bands, DoNotFollowOneWarpGridWithoutTheOther) {
    Scene scene(136, 100, Scene::kFractional, 78);
    scene.context.alignment.warpX[Scene::kDark] = scene.context.alignment.warpY[Scene::kBright] = nullptr;
    for (auto *grids : {&scene.warpX, &scene.warpY})
        grids->fill({});
    ASSERT_EQ(scene.render({100}), SlowRenderer(scene).render());
}

TEST(Bands, RefusesWhatItCannotRender) {
    Scene scene(100, 100, Scene::kNone, 5);
    const HdrBand band = {0, 0, 100, 0};
    const auto status = [&] {
        return render_band(&band, &scene.context, scene.inputs.data(), nullptr, nullptr);
    };
    scene.inputs[0].u32PixelArrayFormat = HDR_FORMAT_NV12;
    EXPECT_EQ(status(), HDR_ERR_FORMAT);
    scene.inputs[0].u32PixelArrayFormat = HDR_FORMAT_YUY2;
    scene.context.smoothingFlag = 0;
    EXPECT_EQ(status(), HDR_ERR_PARAM);
    scene.context.smoothingFlag = 1;
    const auto refusesWithout = [&](auto *&map) {
        const auto kept = std::exchange(map, nullptr);
        EXPECT_EQ(status(), HDR_ERR_NOMEM);
        map = kept;
    };
    refusesWithout(scene.context.check.cellWeights[2]);
    refusesWithout(scene.context.firstMerge.correctionMaps[8]);
    refusesWithout(scene.context.lineBuffers.bandLineBuffers[8][0]);
    refusesWithout(scene.context.localToneMap.map);
    refusesWithout(scene.context.merge.smoothingMergeTable);
    refusesWithout(scene.context.bands.storage[0]);
    EXPECT_EQ(status(), HDR_OK);
}

} // namespace
} // namespace hdr
