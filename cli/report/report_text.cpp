// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/report/report_text.h"

#include <cmath>
#include <iomanip>
#include <sstream>
#include <vector>

#include "cli/report/report_pictures.h"
#include "cli/texts.h"

namespace tristop {
namespace {

/// Lines of a name and a value, or of a name and one value for each photograph.
class TextTable {
public:
    void title(const std::string &text) { lines << '\n' << text << '\n'; }

    void row(const std::string &name, const std::vector<std::string> &values) {
        constexpr int kNameWidth = 22, kValueWidth = 22;
        lines << "  " << std::left << std::setw(kNameWidth) << name;
        for (size_t i = 0; i < values.size(); ++i)
            lines << std::setw(i + 1 < values.size() ? kValueWidth : 0) << values[i];
        lines << '\n';
    }

    std::string text() const { return lines.str(); }

private:
    std::ostringstream lines;
};

std::string decimal(double value, int places) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(places) << value;
    return text.str();
}

/// With a sign unless it is zero.
std::string signedDecimal(double value, int places) {
    std::string text = decimal(value, places);
    if (value > 0)
        text.insert(text.begin(), '+');
    return text;
}

std::string signedNumber(int32_t value) {
    return signedDecimal(value, 0);
}

std::string size(int32_t width, int32_t height) {
    return std::to_string(width) + " x " + std::to_string(height);
}

std::string rectangle(int32_t x0, int32_t y0, int32_t x1, int32_t y1) {
    return std::to_string(x0) + "," + std::to_string(y0) + " to " + std::to_string(x1) + "," +
           std::to_string(y1);
}

std::string range(const std::array<int32_t, 2> &ends) {
    return signedNumber(ends[0]) + " to " + signedNumber(ends[1]);
}

void addPhotographs(TextTable &table, const Options &options, const MergeReport &report) {
    const HdrRunInfo &info = report.runInfo;
    const std::array<int32_t, 3> order = {info.darkIndex, info.midIndex, info.brightIndex};
    const auto row = [&](const std::string &name, auto valueOf) {
        std::vector<std::string> values;
        for (const int32_t input : order)
            values.push_back(valueOf(input));
        table.row(name, values);
    };
    table.title("Photographs");
    table.row("", {"dark", "middle", "bright"});
    row("input", [](int32_t i) { return std::to_string(i + 1); });
    row("exposure estimate", [&](int32_t i) { return decimal(info.exposureEstimate[i], 3); });
    row("stops to the middle", [&](int32_t i) {
        const double stops = std::log2(info.exposureEstimate[info.midIndex] / info.exposureEstimate[i]);
        return signedDecimal(stops, 2);
    });
    const auto ofOthers = [&](const std::string &name, auto valueOf) {
        row(name, [&](int32_t i) {
            return i == info.midIndex ? std::string("-")
                                      : valueOf(report.findings.alignment->inputs[static_cast<size_t>(i)]);
        });
    };
    ofOthers("global shift, px", [](const AlignmentFindings &found) {
        return signedNumber(found.shift[0]) + ", " + signedNumber(found.shift[1]);
    });
    ofOthers("warp across, px", [](const AlignmentFindings &found) { return range(found.warpX); });
    ofOthers("warp down, px", [](const AlignmentFindings &found) { return range(found.warpY); });
    ofOthers("matches", [](const AlignmentFindings &found) { return std::to_string(found.matches); });
    ofOthers("following matches",
             [](const AlignmentFindings &found) { return std::to_string(found.following); });
    ofOthers("valid, reduced px", [](const AlignmentFindings &found) {
        const hdr::Rect &valid = found.validRect;
        return rectangle(valid.x0, valid.y0, valid.x1, valid.y1);
    });
    ofOthers("moved cells", [](const AlignmentFindings &found) { return std::to_string(found.movedCells); });
    row("left out", [&](int32_t i) { return std::string(info.excluded[i] != 0 ? "yes" : "no"); });
    for (size_t i = 0; i < options.photographs.size(); ++i)
        table.row("input " + std::to_string(i + 1), {options.photographs[i]});
}

void addAlignment(TextTable &table, const AlignmentReport &alignment, int32_t brightIndex) {
    table.title("Alignment");
    table.row("reduced pictures", {size(alignment.reducedWidth, alignment.reducedHeight)});
    table.row("warp grid", {size(alignment.warpColumns, alignment.warpRows) + " nodes"});
    table.row("features", {std::to_string(alignment.features)});
    table.row("trusted matches", {std::to_string(alignment.trustedMatches)});
    const bool isAligned = alignment.inputs[static_cast<size_t>(brightIndex)].matches > 0;
    table.row("motion of the bright", {isAligned ? motionInWords(alignment.latestMotion) : "none found"});
}

void addGhosts(TextTable &table, const GhostReport &ghosts) {
    const auto cells = [&](int32_t count) {
        return decimal(ghosts.percent(count), 2) + " %  (" + std::to_string(count) + " cells)";
    };
    table.title("Ghosts");
    table.row("grid", {size(ghosts.columns, ghosts.rows) + " cells"});
    table.row("marked", {cells(ghosts.markedCells)});
    for (size_t i = 0; i < ghosts.maskCells.size(); ++i)
        table.row(std::string("mask ") + "ABCD" [i], { cells(ghosts.maskCells[i]) });
    table.row("ghost mode", {std::to_string(ghosts.mode) + ", " + ghostModeInWords(ghosts.mode)});
    table.row("chroma mode",
              {std::to_string(ghosts.chromaMode) + ", " + chromaModeInWords(ghosts.chromaMode)});
    table.title("Colours of the ghost picture");
    for (const LegendEntry &entry : ghostLegend())
        table.row(entry.colorName, {entry.meaning});
}

void addTimes(TextTable &table, const MergeReport &report) {
    const auto add = [&](const std::string &name, const std::optional<double> &milliseconds) {
        if (milliseconds)
            table.row(name, {decimal(*milliseconds, 1)});
    };
    table.title("Milliseconds");
    add("decode", report.decodeMilliseconds);
    add("merge", report.mergeMilliseconds);
    for (int32_t step = 0; step < HDR_STEP_COUNT; ++step)
        add(std::string("  ") + hdrStepName(step),
            static_cast<double>(report.runInfo.stepMicroseconds[step]) / 1000);
    add("effect", report.effectMilliseconds);
    add("write", report.writeMilliseconds);
}

} // namespace

std::string reportAsText(const Options &options, const MergeReport &report) {
    const HdrRunInfo &info = report.runInfo;
    TextTable table;
    table.row("version", {TRISTOP_VERSION});
    table.row("picture", {options.output});
    table.row("size", {size(report.width, report.height)});
    table.row("ghost level", {std::to_string(options.ghostLevel)});
    table.row("merge", {fallbackInWords(info.fallback)});
    table.row("valid in all", {rectangle(info.crop[0], info.crop[1], info.crop[2], info.crop[3])});
    addPhotographs(table, options, report);
    addAlignment(table, *report.findings.alignment, info.brightIndex);
    addGhosts(table, *report.findings.ghosts);
    addTimes(table, report);
    return table.text();
}

} // namespace tristop
