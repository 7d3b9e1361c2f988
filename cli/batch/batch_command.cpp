// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/batch/batch_command.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "cli/batch/batch_log.h"
#include "cli/batch/batch_options.h"
#include "cli/batch/batch_plan.h"
#include "cli/batch/batch_progress.h"
#include "cli/batch/batch_runner.h"
#include "cli/batch/bracket_finder.h"
#include "cli/batch/photograph_search.h"
#include "cli/merge_bracket.h"
#include "cli/signals.h"

namespace tristop {
namespace {

std::string counted(size_t count, const std::string &thing) {
    return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

ExitStatus fail(const FileError &error, ExitStatus status) {
    std::cerr << "tristop-cli: " << inOneLine(error) << '\n';
    return status;
}

void showUnused(const BatchPlan &plan, std::ostream &out) {
    for (const FileError &unused : plan.unused)
        out << "not used: " << shownPath(unused.path) << ": " << unused.reason << '\n';
}

/// Finds or reads the plan.
std::optional<FileError> preparePlan(const BatchOptions &options, BatchPlan &plan) {
    if (!options.planToRun.empty()) {
        if (auto problem = readPlan(options.planToRun, plan))
            return problem;
        if (options.parts > 1)
            plan = partOfPlan(plan, options.part, options.parts);
        return std::nullopt;
    }
    PhotographSearch found;
    if (auto problem = findPhotographs(options.inputs, options.resultFolder, found))
        return problem;
    plan = makePlan(found, findBrackets(found.photographs, options.rules), options, options.resultFolder,
                    options.nameTemplate);
    if (plan.merges.empty()) {
        showUnused(plan, std::cerr);
        return FileError{"", "no bracket was found among " + counted(found.photographs.size(), "photograph")};
    }
    return std::nullopt;
}

/// What speaks against writing `file`, the plan or the log: it is one of the photographs, or the plan that
/// runs.
std::optional<std::string> overwritten(const std::string &file, const BatchOptions &options,
                                       const BatchPlan &plan) {
    const auto is = [&file](const std::string &other) {
        std::error_code error;
        return std::filesystem::equivalent(file, other, error) && !error;
    };
    const auto isPhotographOf = [&is](const PlannedMerge &merge) {
        return std::ranges::any_of(merge.photographs, is);
    };
    if (std::ranges::any_of(plan.merges, isPhotographOf) ||
        std::ranges::any_of(plan.unused, is, &FileError::path))
        return "would overwrite one of the photographs";
    if (is(options.planToRun))
        return "is the plan itself";
    return std::nullopt;
}

void showPlan(const BatchPlan &plan) {
    for (const PlannedMerge &merge : plan.merges) {
        for (const std::string &photograph : merge.photographs)
            std::cout << shownPath(photograph) << ' ';
        std::cout << "-> " << shownPath(merge.output) << (isDone(merge) ? " (already done)\n" : "\n");
    }
    showUnused(plan, std::cout);
    std::cout << counted(plan.merges.size(), "bracket") << ", "
              << counted(plan.unused.size(), "unused photograph") << '\n';
}

ExitStatus runPlan(const BatchPlan &plan, const BatchOptions &options, BatchLog &log) {
    const Stopwatch stopwatch;
    const BatchOutcome outcome = runBatch(plan, options, log, [] { return stopSignal() != 0; });
    if (!options.quiet) {
        std::cerr << counted(plan.merges.size(), "bracket") << ": " << outcome.merged << " merged, "
                  << outcome.done << " already done, " << outcome.failures.size() << " failed";
        if (outcome.cancelled > 0)
            std::cerr << ", " << outcome.cancelled << " left";
        std::cerr << ", in " << durationInWords(stopwatch.milliseconds() / 1000) << '\n';
    }
    for (const FileError &failure : outcome.failures)
        std::cerr << "tristop-cli: " << shownPath(failure.path) << " was not made: " << failure.reason
                  << '\n';
    if (log.failure())
        fail(*log.failure(), kCannotWrite);
    if (outcome.cancelled > 0 && stopSignal() != 0) {
        std::cerr.flush();
        endBySignal(stopSignal());
    }
    if (!outcome.failures.empty())
        return kSomeFailed;
    return log.failure() ? kCannotWrite : kSuccess;
}

} // namespace

int runBatchCommand(int argc, char **argv) {
    const auto parsed = parseBatchOptions(argc, argv);
    if (const auto *status = std::get_if<ExitStatus>(&parsed))
        return *status;
    const BatchOptions &options = std::get<BatchOptions>(parsed);
    handleSignals();
    BatchPlan plan;
    if (const auto problem = preparePlan(options, plan))
        return fail(*problem, kBadPhotograph);
    if (options.dryRun) {
        showPlan(plan);
        return std::cout.flush() ? kSuccess
                                 : fail({"", "the plan cannot be written to standard output"}, kCannotWrite);
    }
    for (const std::string &file : {options.planToWrite, options.log})
        if (const auto reason = overwritten(file, options, plan))
            return fail({file, *reason}, kBadUsage);
    if (!options.planToWrite.empty()) {
        if (!options.quiet)
            showUnused(plan, std::cerr);
        const auto problem = writePlan(plan, options.planToWrite);
        return problem ? fail(*problem, kCannotWrite) : kSuccess;
    }
    BatchLog log;
    if (!options.log.empty())
        if (const auto problem = log.open(options.log))
            return fail(*problem, kCannotWrite);
    if (!options.quiet)
        showUnused(plan, std::cerr);
    stopOnSignals();
    return runPlan(plan, options, log);
}

} // namespace tristop
