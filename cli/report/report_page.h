// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "cli/report/report_pictures.h"

namespace tristop {

/// A page that shows the report's numbers and its pictures, which lie beside it. It loads nothing from
/// elsewhere.
std::string reportAsPage(const std::string &text, const std::vector<ReportSection> &sections);

} // namespace tristop
