// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/options.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <system_error>
#include <vector>

#include <CLI/CLI.hpp>

#include "app/lomo_engine.h"
#include "app/picture_writer.h"
#include "cli/command_line.h"

namespace tristop {
namespace {

bool sameFile(const std::string &a, const std::string &b) {
    std::error_code error;
    return a == b || std::filesystem::equivalent(a, b, error);
}

/// What is wrong with the files that were named, if anything.
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

void addStyle(CLI::App &app, int32_t &style) {
    const auto read = [&style](const std::string &text) {
        const std::map<std::string, int32_t> styles = {{"original", LomoSettings::kStyleOriginal},
                                                       {"art", LomoSettings::kStyleArt},
                                                       {"bw", LomoSettings::kStyleBlackAndWhite}};
        if (!styles.contains(text))
            throw CLI::ValidationError("--style", "must be original, art or bw, not " + text);
        style = styles.at(text);
    };
    app.add_option_function<std::string>("--style", read,
                                         "Colour style; art is a cross-processed look, bw black and white")
        ->type_name("style")
        ->option_text("original|art|bw (original)");
}

/// Help that begins with how the command is called.
class HelpFormatter final : public CLI::Formatter {
public:
    std::string make_usage(const CLI::App *, std::string name) const override {
        return "Usage: " + name + " DARK MIDDLE BRIGHT -o OUT [OPTIONS]\n";
    }
};

/// The first argument that looks like an option and is none.
std::optional<std::string> unknownOption(const CLI::App &app) {
    for (const std::string &argument : app.remaining())
        if (argument.starts_with('-') && argument != "--")
            return argument;
    return std::nullopt;
}

} // namespace

std::variant<Options, ExitStatus> parseOptions(int argc, char **argv) {
    Options options;
    std::vector<std::string> photographs;
    CLI::App app("Merges three photographs of one scene, taken at different exposures, into one picture.",
                 "tristop-cli");
    app.set_version_flag("--version", "tristop-cli " TRISTOP_VERSION);
    app.formatter(std::make_shared<HelpFormatter>());
    app.get_formatter()->column_width(36);
    app.option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);

    app.add_option("photographs", photographs, "Three JPEG files of one size, in any order")
        ->option_text("DARK MIDDLE BRIGHT");
    app.add_option("-o,--output", options.output, "The picture to write: PNG, JPEG or TIFF by its name")
        ->type_name("file name")
        ->option_text("OUT");
    addNumber(app, "--tone-length", options.toneLength, 0, 100, "How far shadows are lifted");
    addNumber(app, "--brightness", options.brightness, -100, 100, "Brightness of the merged tones");
    addNumber(app, "--tone-saturation", options.toneSaturation, 0, 100, "Colour of the merged tones");
    addNumber(app, "--ghost", options.ghostLevel, 0, 10,
              "How eagerly moving things are taken from one photograph");
    addNumber(app, "--contrast", options.contrast, -100, 100, "Contrast of the result");
    addNumber(app, "--saturation", options.saturation, -100, 100, "Colour saturation of the result");
    addStyle(app, options.style);
    addWriteOptions(app, options.writing);
    app.add_option("--report", options.reportFolder,
                   "Show in this folder how the merge came about: pictures, numbers, index.html")
        ->type_name("folder name")
        ->option_text("DIR");
    app.add_flag("--json", options.json, "Describe the merge on standard output");
    app.add_flag("--quiet", options.quiet, "No progress bar and no warnings");
    app.footer("Exit status: 0 success, 2 bad usage, 3 a photograph cannot be used, 4 the merge failed,\n"
               "5 the picture or its report cannot be written.");

    // What else is wrong with a command line may follow from a misspelt option, which is named first.
    app.allow_extras();
    std::optional<std::string> mistake;
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        if (error.get_exit_code() == 0) {
            app.exit(error); // prints what was asked for
            return std::cout.flush() ? kSuccess : kCannotWrite;
        }
        mistake = error.what();
    }
    if (const auto unknown = unknownOption(app))
        mistake = "unknown option " + *unknown;
    else if (!mistake && photographs.size() != options.photographs.size())
        mistake = "three photographs are needed, not " + std::to_string(photographs.size());
    else if (!mistake && options.output.empty())
        mistake = "the picture to write is missing: name it with -o OUT";
    if (!mistake) {
        std::ranges::copy(photographs, options.photographs.begin());
        mistake = fileMistake(options);
    }
    if (mistake) {
        std::cerr << "tristop-cli: " << *mistake << '\n';
        return kBadUsage;
    }
    return options;
}

} // namespace tristop
