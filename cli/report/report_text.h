// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "cli/merge_report.h"
#include "cli/options.h"

namespace tristop {

/// The report of a merge that succeeded and whose findings are complete, as plain text in columns.
std::string reportAsText(const Options &options, const MergeReport &report);

} // namespace tristop
