// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>

#include "app/file_error.h"
#include "cli/merge_report.h"
#include "cli/options.h"
#include "cli/report/merge_inspection.h"

namespace tristop {

/**
 * Writes the pictures and numbers of a merge into the folder options.reportFolder, which is made when it is
 * missing: PNG pictures, report.txt, report.json and index.html, which shows them all. Files of an earlier
 * report are replaced. Returns why a file could not be written, or nothing on success.
 */
std::optional<FileError> writeReportFolder(const Options &options, const MergeReport &report,
                                           const MergeInspection &inspection);

} // namespace tristop
