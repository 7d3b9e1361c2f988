// SPDX-License-Identifier: GPL-3.0-or-later
// The pictures of a report, held against what the engine had at the time.
#include "cli/report/report_pictures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "app/hdr_engine_bridge.h"
#include "cli/report/merge_findings.h"
#include "cli/report/report_page.h"
#include "engine/core/context.h"
#include "tools/quality/bracket.h"

namespace tristop {
namespace {

using Plane = std::vector<uint8_t>;

Plane lumaOf(const Offscreen &picture) {
    Plane luma;
    for (int y = 0; y < picture.i32Height; ++y) {
        const uint8_t *row = picture.ppu8Plane[0] + y * picture.pi32Pitch[0];
        luma.insert(luma.end(), row, row + picture.i32Width);
    }
    return luma;
}

/// One merge of a scene with something that moves, observed twice: by the report and by the test.
class ReportPictures : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        scene::SceneSettings settings;
        settings.width = 720;
        settings.height = 480;
        settings.seed = 3;
        settings.moving.share = 0.03;
        settings.moving.offset = {{{0.05, 0.02}, {0, 0}, {-0.05, 0.02}}};
        quality::ViewCache views;
        quality::Bracket bracket(settings, views);
        run = new Run;
        IHDREngine engine;
        engine.stepObserver = [](const HdrContext &context, int32_t step) {
            run->inspection.observe(context, step);
            run->findings.observe(context, step);
            run->look(context, step);
        };
        engine.run(bracket.pictures, 45, 10, 40, 6, {});
        ASSERT_EQ(engine.status(), HDR_OK);
        ASSERT_TRUE(run->inspection.complete());
        for (const ReportSection &section : reportSections(run->inspection))
            for (const ReportPicture &picture : section.pictures) {
                run->captions[picture.name] = picture.caption;
                run->canvases.emplace(picture.name, picture.draw());
            }
    }
    static void TearDownTestSuite() { delete run; }

    struct Run {
        MergeInspection inspection;
        MergeFindings findings;
        std::map<std::string, std::string> captions;
        std::map<std::string, Canvas> canvases;
        // What the test saw itself.
        int width = 0, height = 0; ///< of the reduced pictures
        int bright = 0, gridWidth = 0, columns = 0, rows = 0, warpWidth = 0, warpHeight = 0;
        Plane brightBefore, reference, registered;
        std::vector<int32_t> warpX, warpY;
        Plane moved;
        std::vector<float> features, matches;
        int featureCount = 0;
        std::array<Plane, 4> masks;
        std::array<std::vector<int16_t>, 3> weights;

        void look(const HdrContext &context, int32_t step) {
            const hdr::Preparation &preparation = context.preparation;
            const hdr::Alignment &alignment = context.alignment;
            bright = preparation.brightIndex;
            if (step == HDR_STEP_REDUCE) {
                width = preparation.workImages[0]->i32Width;
                height = preparation.workImages[0]->i32Height;
                brightBefore = lumaOf(*preparation.workImages[bright]);
            } else if (step == HDR_STEP_ALIGN) {
                for (uint8_t &level : brightBefore)
                    level = context.tables.toneMatchBrightToMid[level];
                reference = lumaOf(*preparation.workImages[preparation.midIndex]);
                registered = lumaOf(*preparation.registeredImages[bright]);
                warpWidth = alignment.warpWidth;
                warpHeight = alignment.warpHeight;
                warpX.assign(alignment.warpX[bright], alignment.warpX[bright] + warpWidth * warpHeight);
                warpY.assign(alignment.warpY[bright], alignment.warpY[bright] + warpWidth * warpHeight);
                features.assign(alignment.featureTables, alignment.featureTables + 2 * hdr::kFeatureCapacity);
                matches.assign(alignment.matchTables[bright],
                               alignment.matchTables[bright] + 3 * hdr::kFeatureCapacity);
                featureCount = alignment.featureCount;
                if (alignment.movedCells[bright])
                    moved.assign(alignment.movedCells[bright],
                                 alignment.movedCells[bright] + preparation.gridPlaneSize());
            } else if (step == HDR_STEP_WEIGHTS) {
                gridWidth = preparation.gridWidth;
                columns = preparation.gridColumns;
                rows = preparation.gridRows;
                const size_t cells = preparation.gridPlaneSize();
                const hdr::ExposureWeights &held = context.weights;
                const std::array<const uint8_t *, 4> heldMasks = {held.ghostMaskA, held.ghostMaskB,
                                                                  held.ghostMaskC, held.ghostMaskD};
                for (size_t i = 0; i < 4; ++i)
                    masks[i].assign(heldMasks[i], heldMasks[i] + cells);
                const std::array<const int16_t *, 3> heldWeights = {held.lumaWeightDark, held.lumaWeightMid,
                                                                    held.lumaWeightBright};
                for (size_t i = 0; i < 3; ++i)
                    weights[i].assign(heldWeights[i], heldWeights[i] + cells);
            }
        }
    };
    inline static Run *run = nullptr;

    static const Canvas &canvas(const std::string &name) { return run->canvases.at(name); }

    /// Pixels of a picture over the whole reduced one whose colour is not expected(x, y, cell), given the
    /// reduced pixel and the analysis cell shown there.
    template <typename Expected>
    static int mistakes(const std::string &name, Expected expected) {
        const Canvas &picture = canvas(name);
        const int scale = picture.width() / run->width;
        int count = 0;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x) {
                const int fullX = 8 * (x / scale), fullY = 8 * (y / scale);
                const int cell = (fullY / 32 + 1) * run->gridWidth + fullX / 32 + 1;
                count += !expected(picture.at(x, y), (y / scale) * run->width + x / scale,
                                   static_cast<size_t>(cell));
            }
        return count;
    }

    static bool isGray(Color color, int level) {
        return color.red == level && color.green == level && color.blue == level;
    }

    static size_t at(int index) { return static_cast<size_t>(index); }
};

TEST_F(ReportPictures, showTheMasksAndWeightsOfEveryCell) {
    for (size_t i = 0; i < 4; ++i)
        EXPECT_EQ(mistakes(std::string("ghosts-") + "abcd"[i],
                           [&](Color color, int, size_t cell) { return isGray(color, run->masks[i][cell]); }),
                  0);
    const auto isMarked = [](size_t cell) {
        return std::ranges::any_of(run->masks, [cell](const Plane &mask) { return mask[cell] != 0; });
    };
    int marked = 0;
    for (int row = 1; row <= run->rows; ++row)
        for (int column = 1; column <= run->columns; ++column)
            marked += isMarked(at(row * run->gridWidth + column));
    EXPECT_GT(marked, 0);
    ASSERT_TRUE(run->findings.ghosts);
    EXPECT_EQ(run->findings.ghosts->markedCells, marked);
    EXPECT_DOUBLE_EQ(run->findings.ghosts->percent(marked), 100.0 * marked / (run->columns * run->rows));
    EXPECT_EQ(mistakes("ghosts",
                       [&](Color color, int pixel, size_t cell) {
                           return isGray(color, run->reference[at(pixel)]) != isMarked(cell);
                       }),
              0);
    const std::array<const char *, 3> names = {"weights-dark", "weights-middle", "weights-bright"};
    for (size_t i = 0; i < 3; ++i)
        EXPECT_EQ(mistakes(names[i],
                           [&](Color color, int, size_t cell) {
                               return std::abs(color.red - run->weights[i][cell] * 255 / 256) <= 1;
                           }),
                  0);
}

TEST_F(ReportPictures, showTheExposureBeforeAndAfterItsAlignment) {
    const auto shows = [&](const std::string &name, const Plane &luma) {
        return mistakes(name, [&](Color color, int pixel, size_t) { return isGray(color, luma[at(pixel)]); });
    };
    EXPECT_EQ(shows("bright-1-before", run->brightBefore), 0);
    EXPECT_EQ(shows("bright-2-reference", run->reference), 0);
    EXPECT_EQ(shows("bright-4-registered", run->registered), 0);
    EXPECT_EQ(mistakes("bright-7-difference-registered",
                       [&](Color color, int pixel, size_t) {
                           const int level =
                               128 + 4 * (run->registered[at(pixel)] - run->reference[at(pixel)]);
                           const bool isFrame = color.red != color.blue;
                           return isFrame || isGray(color, std::clamp(level, 0, 255));
                       }),
              0);
    EXPECT_EQ(mistakes("bright-moved",
                       [&](Color color, int, size_t cell) {
                           const bool isTinted = !run->moved.empty() && run->moved[cell] != 0;
                           return (color.red != color.blue) == isTinted || color.green > color.blue + 100;
                       }),
              0)
        << "but for the yellow frame";
    const auto totalDifference = [&](const char *name) {
        const Canvas &picture = canvas(name);
        double sum = 0;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                sum += std::abs(picture.at(x, y).green - 128);
        return sum;
    };
    EXPECT_LT(totalDifference("bright-6-difference-aligned"),
              0.7 * totalDifference("bright-5-difference-before"));
    // The pieces at full size agree better, too.
    const auto distance = [&](const char *name) {
        const Canvas &pieces = canvas(name), &reference = canvas("bright-detail-2-reference");
        EXPECT_EQ(pieces.width(), reference.width());
        double sum = 0;
        for (int y = 0; y < pieces.height(); ++y)
            for (int x = 0; x < pieces.width(); ++x)
                sum += std::abs(pieces.at(x, y).green - reference.at(x, y).green);
        return sum;
    };
    EXPECT_LT(distance("bright-detail-3-aligned"), 0.7 * distance("bright-detail-1-before"));
}

TEST_F(ReportPictures, drawTheMotionWhereItIs) {
    const Canvas &grid = canvas("bright-warp");
    const double scale = static_cast<double>(grid.width()) / run->width / 8;
    const std::string &caption = run->captions.at("bright-warp");
    const int gain = std::atoi(caption.substr(caption.find("enlarged ") + 9).c_str());
    ASSERT_GE(gain, 1);
    int nodes = 0;
    for (int row = 0; row < run->warpHeight; ++row)
        for (int column = 0; column < run->warpWidth; ++column) {
            const size_t i = at(row * run->warpWidth + column);
            const int x = static_cast<int>((256 * column - 128 + gain * run->warpX[i]) * scale);
            const int y = static_cast<int>((256 * row - 128 + gain * run->warpY[i]) * scale);
            if (x < 0 || y < 0 || x >= grid.width() || y >= grid.height())
                continue;
            const Color color = grid.at(x, y);
            EXPECT_TRUE(color.red > 200 && color.green > 150 && color.blue < 100) << column << ' ' << row;
            ++nodes;
        }
    EXPECT_GE(nodes, 6);

    const Canvas &matches = canvas("bright-matches");
    int following = 0, found = 0, green = 0;
    for (int i = 0; i < run->featureCount; ++i) {
        const bool follows = run->matches[at(2 * hdr::kFeatureCapacity + i)] > 0;
        following += follows;
        found += run->matches[at(i)] >= 0;
        const Color color =
            matches.at(static_cast<int>((run->features[at(i)] + 0.5) * 8 * scale),
                       static_cast<int>((run->features[at(hdr::kFeatureCapacity + i)] + 0.5) * 8 * scale));
        green += follows && color.green > 180 && color.red < 120;
    }
    EXPECT_GE(following, 10);
    EXPECT_GE(green, 9 * following / 10) << "a few may lie under other arrows";
    ASSERT_TRUE(run->findings.alignment);
    const AlignmentFindings &findings = run->findings.alignment->inputs[at(run->bright)];
    EXPECT_EQ(findings.following, following);
    EXPECT_EQ(findings.matches, found);
    EXPECT_EQ(findings.warpX[1], std::ranges::max(run->warpX));
    EXPECT_EQ(findings.warpY[0], std::ranges::min(run->warpY));
}

TEST_F(ReportPictures, areAllOnThePage) {
    const std::string page = reportAsPage("a<b>&\"c\"", reportSections(run->inspection));
    EXPECT_NE(page.find("a&lt;b&gt;&amp;&quot;c&quot;"), std::string::npos);
    EXPECT_EQ(page.find("://"), std::string::npos) << "loads nothing from elsewhere";
    for (const auto &[name, picture] : run->canvases)
        EXPECT_NE(page.find("src=\"" + name + ".png\""), std::string::npos) << name;
}

TEST(Canvas, drawsSmoothLinesAndClipsThem) {
    Canvas canvas(10, 6);
    canvas.line({-20, 2.5}, {30, 2.5}, 1, {200, 100, 50});
    for (int x = 0; x < 10; ++x) {
        EXPECT_EQ(canvas.at(x, 2), (Color{200, 100, 50}));
        EXPECT_EQ(canvas.at(x, 1), (Color{0, 0, 0}));
        EXPECT_EQ(canvas.at(x, 3), (Color{0, 0, 0}));
    }
    canvas.line({5, 5}, {5, 5}, 1, {100, 100, 100});
    // A dot on a corner covers its four pixels equally.
    EXPECT_EQ(canvas.at(4, 4), canvas.at(5, 5));
    EXPECT_EQ(canvas.at(4, 5), canvas.at(5, 4));
    EXPECT_GT(canvas.at(4, 4).red, 0);
    EXPECT_LT(canvas.at(4, 4).red, 100);
}

} // namespace
} // namespace tristop
