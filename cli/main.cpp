// SPDX-License-Identifier: GPL-3.0-or-later
#include <exception>
#include <iostream>
#include <string>
#include <string_view>

#include "cli/batch/batch_command.h"
#include "cli/merge_bracket.h"
#include "cli/merge_report.h"
#include "cli/options.h"
#include "cli/progress_bar.h"
#include "cli/signals.h"
#include "cli/texts.h"

namespace tristop {
namespace {

void complain(const std::string &message) {
    std::cerr << "tristop-cli: " << message << '\n';
}

/// Prints the report and returns the command's exit status.
ExitStatus tell(const Options &options, const MergeReport &report) {
    if (report.error)
        complain(inOneLine(*report.error));
    else if (report.runInfo.fallback != HDR_FALLBACK_NONE && !options.quiet)
        complain("warning: the picture shows a single exposure: " + fallbackInWords(report.runInfo.fallback));
    if (!options.quiet)
        for (size_t i = 0; i < options.photographs.size(); ++i)
            if (report.runInfo.excluded[i])
                complain("warning: " + options.photographs[i] +
                         " was left out: it does not show what the others show");
    if (!options.json || std::cout << reportAsJson(options, report) << std::endl)
        return report.exitStatus;
    complain("the description cannot be written to standard output");
    return report.error ? report.exitStatus : kCannotWrite;
}

int runMerge(int argc, char **argv) {
    handleSignals();
    const auto parsed = parseOptions(argc, argv);
    if (const auto *status = std::get_if<ExitStatus>(&parsed))
        return *status;
    const Options &options = std::get<Options>(parsed);
    MergeReport report;
    {
        ProgressBar bar(!options.quiet);
        report = mergeBracket(options, {[&bar](int64_t percentage) { bar.show(percentage); }, {}});
    }
    return tell(options, report);
}

} // namespace
} // namespace tristop

int main(int argc, char **argv) {
    using namespace tristop;
    try {
        if (argc > 1 && std::string_view(argv[1]) == "batch")
            return runBatchCommand(argc - 1, argv + 1);
        return runMerge(argc, argv);
    } catch (const std::exception &error) {
        std::cerr << "tristop-cli: " << error.what() << '\n';
        return kMergeFailed;
    }
}
