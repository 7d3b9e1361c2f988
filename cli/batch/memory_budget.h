// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "cli/batch/batch_plan.h"

namespace tristop {

/// An upper bound for the bytes that a merge takes at its peak when its decoding keeps to decodingMemory.
int64_t mergeMemory(const PlannedMerge &merge);

/// The part of it that decoding may take beside the decoded photographs.
int64_t decodingMemory(const PlannedMerge &merge);

/// Half of the machine's memory, in bytes.
int64_t usualMemoryLimit();

/// Lets merges start as long as all that run fit into a limit. What fits nowhere runs alone.
class MemoryBudget {
public:
    explicit MemoryBudget(int64_t limit) : limit(limit) {}

    /// Waits until `bytes` more fit, or nothing else is taken, and takes them.
    void take(int64_t bytes) {
        std::unique_lock lock(mutex);
        given.wait(lock, [&] { return taken == 0 || taken + bytes <= limit; });
        taken += bytes;
    }

    void give(int64_t bytes) {
        const std::lock_guard lock(mutex);
        taken -= bytes;
        given.notify_all();
    }

private:
    const int64_t limit;
    int64_t taken = 0;
    std::mutex mutex;
    std::condition_variable given;
};

} // namespace tristop
