// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/report/report_pictures.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

#include <libyuv.h>

#include "engine/prepare/preparation.h"
#include "engine/prepare/warp_field.h"

namespace tristop {
namespace {

constexpr Color kGreen = {60, 220, 60}, kRed = {255, 60, 40}, kYellow = {255, 220, 0}, kBlue = {60, 110, 255},
                kOrange = {255, 140, 0}, kMagenta = {230, 60, 230}, kGray = {150, 150, 150};

Color gray(int level) {
    const auto sample = static_cast<uint8_t>(std::clamp(level, 0, 255));
    return {sample, sample, sample};
}

/// A canvas on which each sample of a width x height picture is a square; colorAt(x, y) is its colour.
template <typename ColorAt>
Canvas enlarged(int width, int height, int scale, ColorAt colorAt) {
    Canvas canvas(width * scale, height * scale);
    for (int y = 0; y < canvas.height(); ++y)
        for (int x = 0; x < canvas.width(); ++x)
            canvas.set(x, y, colorAt(x / scale, y / scale));
    return canvas;
}

Canvas enlarged(const GrayPicture &picture, int scale) {
    return enlarged(picture.width, picture.height, scale,
                    [&](int x, int y) { return gray(picture.at(x, y)); });
}

Canvas enlarged(const YuvPicture &picture, int scale) {
    const int width = picture.luma.width, height = picture.luma.height;
    std::vector<uint8_t> bgr(3 * static_cast<size_t>(width) * static_cast<size_t>(height));
    libyuv::I444ToRGB24(picture.luma.samples.data(), width, picture.chroma[0].data(), width,
                        picture.chroma[1].data(), width, bgr.data(), 3 * width, width, height);
    return enlarged(width, height, scale, [&](int x, int y) {
        const uint8_t *pixel = bgr.data() + 3 * (y * width + x);
        return Color{pixel[2], pixel[1], pixel[0]};
    });
}

void outline(Canvas &canvas, const hdr::Rect &rect, int scale, Color color) {
    const double x0 = rect.x0 * scale, y0 = rect.y0 * scale, x1 = rect.x1 * scale, y1 = rect.y1 * scale;
    const std::array<Point, 5> corners = {{{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}, {x0, y0}}};
    for (size_t i = 0; i + 1 < corners.size(); ++i)
        canvas.line(corners[i], corners[i + 1], 2, color);
}

/// Index of the cell of the analysis grid that a reduced pixel is in.
size_t cellOf(const MergeInspection &inspection, int x, int y) {
    const int column = x / hdr::kReducedCellSize + 1, row = y / hdr::kReducedCellSize + 1;
    return static_cast<size_t>(row * inspection.gridWidth + column);
}

/// Draws one exposure's pictures.
class ExposurePictures {
public:
    ExposurePictures(const MergeInspection &inspection, int input, std::string role)
        : inspection(inspection), exposure(inspection.exposures[static_cast<size_t>(input)]),
          reference(inspection.exposures[static_cast<size_t>(inspection.midIndex)]), role(std::move(role)),
          scale(reportScale(inspection)) {}

    ReportSection flicker() const {
        return {"The " + role + " exposure against the reference",
                "Luminance in the reference's tones. Between the reference and its neighbours nothing should "
                "jump but what moved.",
                {{role + "-1-before", "before the alignment",
                  [*this] { return enlarged(exposure.lumaBefore, scale); }},
                 {role + "-2-reference", "the reference",
                  [*this] { return enlarged(reference.lumaBefore, scale); }},
                 {role + "-3-aligned", "aligned", [*this] { return enlarged(exposure.lumaAfter, scale); }},
                 {role + "-4-registered", "registered: what ghost detection compares with the reference",
                  [*this] { return enlarged(exposure.registered, scale); }}},
                true};
    }

    ReportSection details() const {
        return {"Details of the " + role + " exposure at full size",
                "Pieces of the photograph with much texture, one from each part of it.",
                {{role + "-detail-1-before", "before the alignment",
                  [*this] { return enlarged(exposure.details, 1); }},
                 {role + "-detail-2-reference", "the reference",
                  [*this] { return enlarged(reference.details, 1); }},
                 {role + "-detail-3-aligned", "aligned",
                  [*this] { return enlarged(exposure.alignedDetails, 1); }}},
                true};
    }

    ReportSection differences() const {
        const std::string amplified = ", times " + std::to_string(kDifferenceGain);
        return {
            "Differences of the " + role + " exposure from the reference",
            "Gray is equal, brighter where the exposure is brighter than the reference. The yellow frame is "
            "where the aligned exposure is valid.",
            {{role + "-5-difference-before", "before the alignment" + amplified,
              [*this] { return difference(exposure.lumaBefore); }},
             {role + "-6-difference-aligned", "aligned" + amplified,
              [*this] { return framed(difference(exposure.lumaAfter)); }},
             {role + "-7-difference-registered", "registered" + amplified,
              [*this] { return framed(difference(exposure.registered)); }},
             {role + "-moved",
              exposure.movedCells.empty()
                  ? "aligned" + amplified + ", no cells: the registered picture tells what moved"
                  : "aligned" + amplified + ", the cells where the alignment saw something move in red",
              [*this] { return movedCells(); }}}};
    }

    ReportSection motion() const {
        const std::string shift = "the global shift of " + std::to_string(exposure.shift[0]) + ", " +
                                  std::to_string(exposure.shift[1]) + " pixels";
        return {"Motion of the " + role + " exposure",
                "Relative to " + shift + ".",
                {{role + "-matches",
                  "features of the reference and how the exposure sees them move, " + times(matchGain()) +
                      ": green as the exposure moves, red not so, gray ring: not found again",
                  [*this] { return matches(); }},
                 {role + "-warp", "the warp grid, its displacements " + times(warpGain()),
                  [*this] { return warpGrid(); }}}};
    }

private:
    static constexpr int kDifferenceGain = 4;
    static constexpr double kThickness = 2;

    static std::string times(int gain) { return "enlarged " + std::to_string(gain) + " times"; }

    Canvas difference(const GrayPicture &luma) const {
        return enlarged(luma.width, luma.height, scale, [&](int x, int y) {
            return gray(128 + kDifferenceGain * (luma.at(x, y) - reference.lumaBefore.at(x, y)));
        });
    }

    Canvas movedCells() const {
        Canvas canvas = difference(exposure.lumaAfter);
        if (!exposure.movedCells.empty())
            for (int y = 0; y < canvas.height(); ++y)
                for (int x = 0; x < canvas.width(); ++x)
                    if (exposure.movedCells[cellOf(inspection, x / scale, y / scale)] != 0)
                        canvas.set(x, y, blend(canvas.at(x, y), kRed, 0.35));
        return framed(std::move(canvas));
    }

    Canvas framed(Canvas canvas) const {
        outline(canvas, exposure.validRect, scale, kYellow);
        return canvas;
    }

    /// The reference, dimmed for lines to be seen on it.
    Canvas background() const {
        return enlarged(reference.lumaBefore.width, reference.lumaBefore.height, scale,
                        [&](int x, int y) { return gray(reference.lumaBefore.at(x, y) * 2 / 3); });
    }

    /// Canvas pixels across a pixel of the photograph.
    double fullScale() const { return static_cast<double>(scale) / hdr::kReduction; }

    /// A match's displacement against the global shift, in pixels of the photograph.
    Point ownMotion(const InspectedMatch &match) const {
        const double x = match.x - match.matchX, y = match.y - match.matchY;
        return {hdr::kReduction * x - exposure.shift[0], hdr::kReduction * y - exposure.shift[1]};
    }

    /// Makes most arrows of matches that follow the exposure a third as long as cells of the warp grid or
    /// less.
    int matchGain() const {
        std::vector<double> lengths;
        for (const InspectedMatch &match : exposure.matches)
            if (match.follows)
                lengths.push_back(std::hypot(ownMotion(match).x, ownMotion(match).y));
        std::ranges::sort(lengths);
        return gainFor(lengths.empty() ? 0 : lengths[lengths.size() * 9 / 10]);
    }

    int warpGain() const {
        int32_t largest = 0;
        for (const auto *grid : {&exposure.warpX, &exposure.warpY})
            for (const int32_t value : *grid)
                largest = std::max(largest, std::abs(value));
        return gainFor(largest);
    }

    static int gainFor(double displacement) {
        constexpr double kLength = hdr::kWarpSpacing / 3.0;
        constexpr int kLargestGain = 16;
        return std::clamp(static_cast<int>(kLength / std::max(displacement, 1.0)), 1, kLargestGain);
    }

    Canvas matches() const {
        Canvas canvas = background();
        const double gain = matchGain() * fullScale();
        const double longest = canvas.width() / 8.0;
        for (const InspectedMatch &match : exposure.matches) {
            const Point place = {(match.x + 0.5) * scale, (match.y + 0.5) * scale};
            if (!match.found) {
                canvas.line(place, place, 3 * kThickness, kGray);
                canvas.line(place, place, kThickness, Color{0, 0, 0});
                continue;
            }
            const Point motion = ownMotion(match);
            const double length = std::hypot(motion.x, motion.y) * gain;
            const double stretch = length > longest ? longest / length * gain : gain;
            const Color color = match.follows ? kGreen : kRed;
            canvas.line(place, place, 3 * kThickness, color);
            canvas.arrow(place, {place.x + motion.x * stretch, place.y + motion.y * stretch}, kThickness,
                         color);
        }
        return canvas;
    }

    Canvas warpGrid() const {
        Canvas canvas = background();
        drawGrid(canvas, 0, kThickness / 2, kGray);
        drawGrid(canvas, warpGain(), kThickness, kYellow);
        return canvas;
    }

    /// The grid's lines and nodes with their displacements enlarged `gain` times.
    void drawGrid(Canvas &canvas, int gain, double thickness, Color color) const {
        const auto node = [&](int column, int row) {
            const size_t i = static_cast<size_t>(row * inspection.warpColumns + column);
            return Point{(hdr::warpNodePosition(column) + gain * exposure.warpX[i]) * fullScale(),
                         (hdr::warpNodePosition(row) + gain * exposure.warpY[i]) * fullScale()};
        };
        for (int row = 0; row < inspection.warpRows; ++row)
            for (int column = 0; column < inspection.warpColumns; ++column) {
                const Point here = node(column, row);
                canvas.line(here, here, 3 * thickness, color);
                if (column + 1 < inspection.warpColumns)
                    canvas.line(here, node(column + 1, row), thickness, color);
                if (row + 1 < inspection.warpRows)
                    canvas.line(here, node(column, row + 1), thickness, color);
            }
    }

    const MergeInspection &inspection;
    const InspectedExposure &exposure;
    const InspectedExposure &reference;
    std::string role;
    int scale;
};

/// Draws what was decided for each cell of the analysis grid.
class GridPictures {
public:
    explicit GridPictures(const MergeInspection &inspection)
        : inspection(inspection), reference(inspection.exposures[static_cast<size_t>(inspection.midIndex)]),
          scale(reportScale(inspection)) {}

    ReportSection ghosts() const {
        std::string text = "The masks over the reference:";
        for (const LegendEntry &entry : ghostLegend())
            text += " " + entry.colorName + ": " + entry.meaning + ";";
        text.back() = '.';
        std::vector<ReportPicture> pictures = {{"ghosts", "all masks", [*this] { return ghostColors(); }}};
        for (size_t i = 0; i < inspection.ghostMasks.size(); ++i)
            pictures.push_back({std::string("ghosts-") + "abcd"[i], std::string("mask ") + "ABCD"[i],
                                [*this, i] { return cells(inspection.ghostMasks[i], 255); }});
        return {"Ghosts", text, std::move(pictures)};
    }

    ReportSection weights() const {
        return {
            "Weights",
            "How much each exposure gives to the luminance. Together: the dark exposure in blue, the middle "
            "one in green, the bright one in red.",
            {{"weights", "all exposures", [*this] { return weightColors(); }},
             {"weights-dark", "the dark exposure, white is all",
              [*this] { return cells(inspection.darkWeights, 256); }},
             {"weights-middle", "the middle exposure", [*this] { return cells(inspection.midWeights, 256); }},
             {"weights-bright", "the bright exposure",
              [*this] { return cells(inspection.brightWeights, 256); }}}};
    }

private:
    template <typename ColorAt>
    Canvas overReference(ColorAt colorAt) const {
        return enlarged(reference.lumaBefore.width, reference.lumaBefore.height, scale, colorAt);
    }

    template <typename T>
    Canvas cells(const std::vector<T> &values, int white) const {
        return overReference(
            [&](int x, int y) { return gray(values[cellOf(inspection, x, y)] * 255 / white); });
    }

    Canvas ghostColors() const {
        const auto legend = ghostLegend();
        return overReference([&](int x, int y) {
            const size_t cell = cellOf(inspection, x, y);
            const auto isSet = [&](size_t mask) { return inspection.ghostMasks[mask][cell] != 0; };
            const Color level = gray(reference.lumaBefore.at(x, y));
            const bool a = isSet(0), b = isSet(1), c = isSet(2), d = isSet(3);
            if (!(a || b || c || d))
                return level;
            const size_t entry = d ? 0 : b ? 1 : a && c ? 2 : a ? 3 : 4;
            return blend(level, legend[entry].color, 0.5);
        });
    }

    Canvas weightColors() const {
        return overReference([&](int x, int y) {
            const size_t cell = cellOf(inspection, x, y);
            const double level = 0.35 + 0.65 * reference.lumaBefore.at(x, y) / 255;
            const auto part = [&](const std::vector<int16_t> &weights) {
                return static_cast<uint8_t>(std::clamp(static_cast<int>(weights[cell]), 0, 255) * level);
            };
            return Color{part(inspection.brightWeights), part(inspection.midWeights),
                         part(inspection.darkWeights)};
        });
    }

    const MergeInspection &inspection;
    const InspectedExposure &reference;
    int scale;
};

ReportPicture colorPicture(std::string name, std::string caption, const YuvPicture &picture, int scale) {
    return {std::move(name), std::move(caption), [&picture, scale] { return enlarged(picture, scale); }};
}

} // namespace

std::vector<LegendEntry> ghostLegend() {
    return {{kMagenta, "magenta", "D, from the bright exposure alone"},
            {kBlue, "blue", "B, from the dark exposure alone"},
            {kOrange, "orange", "A and C, from the middle exposure alone, both others removed"},
            {kRed, "red", "A, from the middle exposure alone, the dark one removed"},
            {kYellow, "yellow", "C, the bright exposure removed"}};
}

std::vector<ReportSection> reportSections(const MergeInspection &inspection) {
    const int scale = reportScale(inspection);
    const auto original = [&](int input) -> const YuvPicture & {
        return inspection.exposures[static_cast<size_t>(input)].original;
    };
    std::vector<ReportSection> sections = {
        {"Photographs",
         "Reduced to an eighth, as the analysis sees them, and merged.",
         {colorPicture("photograph-dark", "the dark exposure", original(inspection.darkIndex), scale),
          colorPicture("photograph-middle", "the middle exposure, the reference",
                       original(inspection.midIndex), scale),
          colorPicture("photograph-bright", "the bright exposure", original(inspection.brightIndex), scale),
          colorPicture("merged", "merged, before the tone mapping", inspection.merged, scale)}}};
    const GridPictures grid(inspection);
    sections.push_back(grid.ghosts());
    sections.push_back(grid.weights());
    for (const ExposurePictures &exposure :
         {ExposurePictures(inspection, inspection.darkIndex, "dark"),
          ExposurePictures(inspection, inspection.brightIndex, "bright")}) {
        sections.push_back(exposure.flicker());
        sections.push_back(exposure.details());
        sections.push_back(exposure.differences());
        sections.push_back(exposure.motion());
    }
    return sections;
}

int reportScale(const MergeInspection &inspection) {
    constexpr int kLongSide = 1200, kLeast = 2, kMost = 8;
    const GrayPicture &luma = inspection.exposures[0].original.luma;
    return std::clamp(kLongSide / std::max({luma.width, luma.height, 1}), kLeast, kMost);
}

} // namespace tristop
