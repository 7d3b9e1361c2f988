// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "cli/report/canvas.h"
#include "cli/report/merge_inspection.h"

namespace tristop {

/// A picture of the report.
struct ReportPicture {
    std::string name; ///< of its file, without suffix
    std::string caption;
    std::function<Canvas()> draw;
};

/// Pictures that belong together.
struct ReportSection {
    std::string title;
    std::string text;
    std::vector<ReportPicture> pictures;
    bool comparison = false; ///< the pictures are to be seen in turn, in the same place
};

/// Colour of a mark and its meaning.
struct LegendEntry {
    Color color;
    std::string colorName;
    std::string meaning;
};

/// The colours in which the ghost masks are laid over the reference.
std::vector<LegendEntry> ghostLegend();

/// Pixels of the report's pictures across a reduced pixel: at least 2, more for small pictures.
int reportScale(const MergeInspection &inspection);

/// All pictures that show how a merge came about: of reportScale, but for the details at full size. The
/// inspection must be complete and outlive what is returned.
std::vector<ReportSection> reportSections(const MergeInspection &inspection);

} // namespace tristop
