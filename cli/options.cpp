// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/options.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <vector>

#include "app/picture_writer.h"
#include "cli/command_line.h"

namespace tristop {
namespace {

bool sameFile(const std::string &a, const std::string &b) {
    std::error_code error;
    return a == b || std::filesystem::equivalent(a, b, error);
}

} // namespace

std::optional<std::string> fileMistake(const Options &options) {
    const auto &photographs = options.photographs;
    for (size_t i = 0; i < photographs.size(); ++i)
        for (size_t j = i + 1; j < photographs.size(); ++j)
            if (sameFile(photographs[i], photographs[j]))
                return photographs[j] + ": is given twice; a merge takes three different photographs";
    if (!pictureFormat(options.output))
        return options.output + ": its name must end in .png, .jpg, .jpeg, .tif or .tiff";
    for (const std::string &photograph : photographs)
        if (sameFile(photograph, options.output))
            return options.output + ": the result would overwrite one of the photographs";
    return std::nullopt;
}

std::variant<Options, ExitStatus> parseOptions(int argc, char **argv) {
    Options options;
    std::vector<std::string> photographs;
    CLI::App app("Merges three photographs of one scene, taken at different exposures, into one picture.",
                 "tristop-cli");
    app.set_version_flag("--version", "tristop-cli " TRISTOP_VERSION);
    prepareCommandLine(app,
                       "tristop-cli DARK MIDDLE BRIGHT -o OUT [OPTIONS]\n"
                       "       tristop-cli batch FOLDER... -o DIR [OPTIONS]   (batch --help tells more)");

    app.add_option("photographs", photographs,
                   "Three photographs of one size (camera RAW, JPEG or TIFF), in any order")
        ->option_text("DARK MIDDLE BRIGHT");
    app.add_option("-o,--output", options.output, "The picture to write: PNG, JPEG or TIFF by its name")
        ->type_name("file name")
        ->option_text("OUT");
    addMergeSettings(app, options);
    app.add_option("--report", options.reportFolder,
                   "Show in this folder how the merge came about: pictures, numbers, index.html")
        ->type_name("folder name")
        ->option_text("DIR");
    app.add_flag("--json", options.json, "Describe the merge on standard output");
    app.add_flag("--quiet", options.quiet, "No progress bar and no warnings");
    app.footer("Exit status: 0 success, 2 bad usage, 3 a photograph cannot be used, 4 the merge failed,\n"
               "5 the picture or its report cannot be written.");

    const auto mistake = [&]() -> std::optional<std::string> {
        if (photographs.size() != options.photographs.size())
            return "three photographs are needed, not " + std::to_string(photographs.size());
        if (options.output.empty())
            return "the picture to write is missing: name it with -o OUT";
        std::ranges::copy(photographs, options.photographs.begin());
        return fileMistake(options);
    };
    if (const auto status = parseCommandLine(app, argc, argv, mistake))
        return *status;
    return options;
}

} // namespace tristop
