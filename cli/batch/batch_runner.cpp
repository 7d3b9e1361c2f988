// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/batch/batch_runner.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <future>
#include <mutex>
#include <system_error>
#include <utility>

#include <malloc.h>

#include "app/file_writer.h"
#include "cli/batch/batch_progress.h"
#include "cli/batch/memory_budget.h"
#include "cli/merge_bracket.h"
#include "cli/texts.h"

namespace tristop {
namespace {

class BatchRunner {
public:
    BatchRunner(const BatchPlan &plan, const BatchOptions &options, BatchLog &log,
                const std::function<bool()> &stopRequested)
        : plan(plan), options(options), log(log), stopRequested(stopRequested), budget(options.memory),
          progress(plan.merges.size(), !options.quiet) {}

    BatchOutcome run() {
        for (const PlannedMerge &merge : plan.merges) {
            if (options.redo || !isDone(merge))
                waiting.push_back(&merge);
            else
                noteDone(merge);
        }
        std::vector<std::future<void>> workers(std::min(static_cast<size_t>(options.jobs), waiting.size()));
        for (auto &worker : workers)
            worker = std::async(std::launch::async, [this] { work(); });
        for (auto &worker : workers)
            worker.get();
        outcome.cancelled = plan.merges.size() - outcome.done - outcome.merged - outcome.failures.size();
        return std::move(outcome);
    }

private:
    void work() {
        while (const PlannedMerge *merge = takeNext()) {
            const Options mergeOptions = optionsFor(*merge);
            note(mergeOptions, mergeOne(mergeOptions, static_cast<size_t>(decodingMemory(*merge))));
            ::malloc_trim(0); // what the heap keeps of a merge would add to that of the next
            budget.give(mergeMemory(*merge));
        }
    }

    /// The next merge, when its memory has become free; null when there is none to start. In the plan's
    /// order: only the first in the line waits for memory.
    const PlannedMerge *takeNext() {
        const std::lock_guard lock(line);
        if (next == waiting.size() || stopRequested())
            return nullptr;
        const PlannedMerge *merge = waiting[next++];
        budget.take(mergeMemory(*merge));
        if (!stopRequested())
            return merge;
        budget.give(mergeMemory(*merge));
        return nullptr;
    }

    Options optionsFor(const PlannedMerge &merge) const {
        Options result;
        static_cast<MergeSettings &>(result) = plan.settings;
        result.photographs = merge.photographs;
        result.output = merge.output;
        return result;
    }

    MergeReport mergeOne(const Options &mergeOptions, size_t memoryToDecode) const {
        MergeReport report;
        report.exitStatus = kCannotWrite;
        std::error_code error;
        const auto folder = std::filesystem::path(mergeOptions.output).parent_path();
        std::filesystem::create_directories(folder, error);
        if (error)
            report.error = cannotWrite(folder.string(), error.message());
        else if (const auto mistake = fileMistake(mergeOptions))
            report.error = FileError{"", *mistake};
        else
            return mergeBracket(mergeOptions, {{}, stopRequested}, memoryToDecode);
        return report;
    }

    void noteDone(const PlannedMerge &merge) {
        ++outcome.done;
        progress.ended(merge.output, BatchProgress::Ending::Done, "already done");
        log.add("done", optionsFor(merge), {});
    }

    void note(const Options &mergeOptions, const MergeReport &report) {
        const std::string &output = mergeOptions.output;
        if (report.engineStatus == HDR_CANCELLED) {
            log.add("cancelled", mergeOptions, report);
        } else if (report.error) {
            const std::string reason = inOneLine(*report.error);
            progress.ended(output, BatchProgress::Ending::Failed, "failed: " + reason);
            log.add("failed", mergeOptions, report);
            const std::lock_guard lock(counting);
            outcome.failures.push_back({output, reason});
        } else {
            char seconds[32];
            std::snprintf(seconds, sizeof seconds, "%.1f s", report.totalMilliseconds / 1000);
            std::string told = std::string("merged in ") + seconds;
            if (report.runInfo.fallback != HDR_FALLBACK_NONE)
                told += "; it shows a single exposure: " + fallbackInWords(report.runInfo.fallback);
            progress.ended(output, BatchProgress::Ending::Merged, told);
            log.add("merged", mergeOptions, report);
            const std::lock_guard lock(counting);
            ++outcome.merged;
        }
    }

    const BatchPlan &plan;
    const BatchOptions &options;
    BatchLog &log;
    const std::function<bool()> &stopRequested;
    MemoryBudget budget;
    BatchProgress progress;
    std::mutex line; ///< of those who take merges
    std::vector<const PlannedMerge *> waiting;
    size_t next = 0;
    std::mutex counting;
    BatchOutcome outcome;
};

} // namespace

BatchOutcome runBatch(const BatchPlan &plan, const BatchOptions &options, BatchLog &log,
                      const std::function<bool()> &stopRequested) {
    return BatchRunner(plan, options, log, stopRequested).run();
}

} // namespace tristop
