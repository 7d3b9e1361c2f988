// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/batch/batch_options.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <system_error>
#include <thread>

#include "cli/batch/batch_plan.h"
#include "cli/batch/memory_budget.h"
#include "cli/command_line.h"

namespace tristop {
namespace {

void addText(CLI::App &app, const std::string &name, std::string &value, const std::string &form,
             const std::string &description) {
    app.add_option(name, value, description)->type_name("argument")->option_text(form);
}

void addPause(CLI::App &app, BracketRules &rules) {
    const auto read = [&rules](const std::string &text) {
        constexpr double kLongest = 24 * 60 * 60;
        char *end = nullptr;
        const double seconds = std::strtod(text.c_str(), &end);
        if (text.empty() || *end != '\0' || !(seconds >= 0 && seconds <= kLongest))
            throw CLI::ValidationError("--gap", "must be a number of seconds up to a day, not " + text);
        rules.pause = std::chrono::microseconds(std::llround(seconds * 1e6));
    };
    app.add_option_function<std::string>("--gap", read,
                                         "The longest pause between the photographs of a bracket; without "
                                         "capture times, of files' times")
        ->type_name("argument")
        ->option_text("SECONDS (5)");
}

void addGroup(CLI::App &app, BracketRules &rules) {
    const auto read = [&rules](const std::string &text) {
        if (text != "3")
            throw CLI::ValidationError("--group", "must be 3: a bracket is three photographs, not " + text);
        rules.threeByThree = true;
    };
    app.add_option_function<std::string>(
           "--group", read, "Take photographs without capture data three by three, in the order of names")
        ->type_name("argument")
        ->option_text("3");
}

/// "2G": a number of bytes with K, M, G or T for powers of 1024.
void addMemory(CLI::App &app, int64_t &memory) {
    const auto read = [&memory](const std::string &text) {
        constexpr int64_t kMost = int64_t{1} << 50;
        char *end = nullptr;
        const double number = std::strtod(text.c_str(), &end);
        std::string unit = end;
        const std::string units = "KMGT";
        size_t power = 0;
        if (unit.size() == 1 && units.find(unit[0]) != std::string::npos)
            power = units.find(unit[0]) + 1;
        const double bytes = std::ldexp(number, static_cast<int>(10 * power));
        if (end == text.c_str() || (!unit.empty() && power == 0) || !(bytes >= 1 && bytes <= kMost))
            throw CLI::ValidationError("--memory", "must be a size such as 800M or 4G, not " + text);
        memory = static_cast<int64_t>(bytes);
    };
    app.add_option_function<std::string>("--memory", read,
                                         "What merges that run at once may take together; one always runs")
        ->type_name("argument")
        ->option_text("SIZE (half of the machine's)");
}

void addSelect(CLI::App &app, BatchOptions &options) {
    const auto read = [&options](const std::string &text) {
        constexpr long kMost = 1'000'000;
        char *slash = nullptr, *end = nullptr;
        const long part = std::strtol(text.c_str(), &slash, 10);
        const long parts = *slash == '/' ? std::strtol(slash + 1, &end, 10) : 0;
        if (part < 1 || part > parts || parts > kMost || *end != '\0')
            throw CLI::ValidationError("--select", "must be I/N with I from 1 to N, not " + text);
        options.part = static_cast<int32_t>(part - 1);
        options.parts = static_cast<int32_t>(parts);
    };
    app.add_option_function<std::string>("--select", read, "With --run: only part I of N equal parts")
        ->type_name("argument")
        ->option_text("I/N");
}

/// What is wrong with the options together, if anything.
std::optional<std::string> mistakeIn(const CLI::App &app, const BatchOptions &options) {
    if (!options.planToRun.empty()) {
        constexpr std::array kAllowed = {"--run", "--select",  "--jobs", "--memory",
                                         "--log", "--dry-run", "--redo", "--quiet"};
        for (const CLI::Option *option : app.get_options())
            if (option->count() > 0 && std::ranges::none_of(kAllowed, [option](const char *name) {
                    return option->check_name(name);
                }))
                return option->get_name() + " is for planning; --run takes everything from its plan";
        return std::nullopt;
    }
    if (options.parts > 1)
        return "--select goes with --run";
    if (options.inputs.empty())
        return "there is nothing to look for brackets in: name folders or photographs";
    if (options.resultFolder.empty())
        return "the folder for the results is missing: name it with -o DIR";
    if (const auto mistake = templateMistake(options.nameTemplate))
        return "--name: " + *mistake + ", not " + options.nameTemplate;
    for (const std::string &input : options.inputs) {
        std::error_code error;
        if (std::filesystem::equivalent(input, options.resultFolder, error))
            return options.resultFolder + ": the results need a folder of their own";
    }
    return std::nullopt;
}

} // namespace

std::variant<BatchOptions, ExitStatus> parseBatchOptions(int argc, char **argv) {
    BatchOptions options;
    options.memory = usualMemoryLimit();
    options.jobs = std::clamp(static_cast<int32_t>(std::thread::hardware_concurrency() / 2), 2, 8);
    CLI::App app("Finds the brackets of three in folders of photographs and merges each into one picture.",
                 "tristop-cli batch");
    prepareCommandLine(app, "tristop-cli batch FOLDER... -o DIR [OPTIONS]\n"
                            "       tristop-cli batch --run FILE [--select I/N] [OPTIONS]");
    app.add_option("inputs", options.inputs, "Folders, with all below them, and photographs")
        ->option_text("FOLDER...");
    addText(app, "-o,--output", options.resultFolder, "DIR", "The folder for the results");
    addText(app, "--name", options.nameTemplate, "TEMPLATE (" + options.nameTemplate + ")",
            "Names of the results: {first} and {middle} photograph, {date}, {n}; PNG, JPEG or TIFF by the "
            "suffix");
    addPause(app, options.rules);
    addGroup(app, options.rules);
    app.add_flag("--dry-run", options.dryRun, "Show the brackets and what is not used, merge nothing");
    addText(app, "--plan", options.planToWrite, "FILE",
            "Write the list of merges to this file, merge nothing");
    addText(app, "--run", options.planToRun, "FILE", "Merge what this plan lists");
    addSelect(app, options);
    addNumber(app, "--jobs", options.jobs, 1, 64, "How many brackets are merged at once");
    addMemory(app, options.memory);
    addText(app, "--log", options.log, "FILE", "Append a line of JSON for each bracket to this file");
    app.add_flag("--redo", options.redo, "Merge also what is already done");
    app.add_flag("--quiet", options.quiet, "Tell of failures only");
    addMergeSettings(app, options);
    app.footer("A result that is newer than its photographs is done and left alone. Exit status: 0 success,\n"
               "2 bad usage, 3 nothing to merge was found or can be read, 5 a file cannot be written,\n"
               "6 some brackets could not be merged.");
    if (const auto status =
            parseCommandLine(app, argc, argv, [&app, &options] { return mistakeIn(app, options); }))
        return *status;
    return options;
}

} // namespace tristop
