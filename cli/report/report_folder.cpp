// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/report/report_folder.h"

#include <filesystem>
#include <new>
#include <system_error>
#include <vector>

#include "app/file_writer.h"
#include "app/picture_writer.h"
#include "cli/report/report_page.h"
#include "cli/report/report_pictures.h"
#include "cli/report/report_text.h"

namespace tristop {
namespace {

constexpr const char *kNoMemory = "there is not enough memory";

std::optional<FileError> writeFiles(const Options &options, const MergeReport &report,
                                    const MergeInspection &inspection) {
    const std::filesystem::path folder = options.reportFolder;
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error)
        return cannotWrite(options.reportFolder, error.message());
    const auto sections = reportSections(inspection);
    for (const ReportSection &section : sections)
        for (const ReportPicture &picture : section.pictures)
            if (auto problem = writePicture(folder / (picture.name + ".png"), picture.draw().view()))
                return problem;
    const std::string text = reportAsText(options, report);
    if (auto problem = replaceFile(folder / "report.txt", text))
        return problem;
    if (auto problem = replaceFile(folder / "report.json", reportAsJson(options, report) + '\n'))
        return problem;
    return replaceFile(folder / "index.html", reportAsPage(text, sections));
}

} // namespace

std::optional<FileError> writeReportFolder(const Options &options, const MergeReport &report,
                                           const MergeInspection &inspection) {
    try {
        if (inspection.complete())
            return writeFiles(options, report, inspection);
    } catch (const std::bad_alloc &) {
        // as when the inspection ran out of memory
    }
    return cannotWrite(options.reportFolder, kNoMemory);
}

} // namespace tristop
