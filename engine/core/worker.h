// SPDX-License-Identifier: MIT
// A thin layer over POSIX threads: joinable workers and one-shot events.
#pragma once

#include "engine/hdr_engine.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace hdr {

/// A running thread, or 0 when there is none.
using WorkerThread = uint64_t;
using WorkerEntry = void *(*)(void *argument);

/// Starts `entry(argument)` on a new thread; 0 for a null entry or when no thread could be made.
WorkerThread workerStart(WorkerEntry entry, void *argument);
/// Joins the thread; a handle of 0 is ignored and the timeout is not used. Always 0.
int64_t workerWait(WorkerThread thread, int timeout);
/// Joins the thread; a handle of 0 is ignored. Always 0.
int64_t workerJoin(WorkerThread thread);
/// Ends the use of a handle that has been waited for. Always 0.
int64_t workerClose(WorkerThread thread);

inline constexpr int kWaitForever = -1;

/// Runs `run(task)` once for each of four tasks on four threads and returns when all have ended. A task whose
/// thread could not be started runs on the calling thread, so that no part of a picture is ever missing.
template <typename Task, typename Run>
void runOnFourWorkers(std::array<Task, 4> &tasks, Run run) {
    struct Job {
        Task *task;
        Run *run;
    };
    const WorkerEntry work = [](void *argument) -> void * {
        Job *job = static_cast<Job *>(argument);
        (*job->run)(*job->task);
        return nullptr;
    };
    std::array<Job, 4> jobs;
    std::array<WorkerThread, 4> threads;
    for (size_t i = 0; i < 4; i++) {
        jobs[i] = {&tasks[i], &run};
        threads[i] = workerStart(work, &jobs[i]);
    }
    for (size_t i = 0; i < 4; i++)
        if (threads[i] == 0)
            work(&jobs[i]);
    for (WorkerThread thread : threads) {
        workerWait(thread, kWaitForever);
        workerClose(thread);
    }
}

/// One of four parts of a range of rows or other items: numbers `first` to `end` - 1.
struct RangePart {
    int part; ///< 0 to 3
    int first, end;
};

/// Runs `run(part)` for each of four nearly equal parts of the range first to end - 1, on four threads.
template <typename Run>
void runOnFourParts(int first, int end, Run run) {
    std::array<RangePart, 4> parts;
    for (int i = 0; i < 4; i++) {
        const auto boundary = [=](int64_t k) { return first + static_cast<int>((end - first) * k / 4); };
        parts[static_cast<size_t>(i)] = {i, boundary(i), boundary(i + 1)};
    }
    runOnFourWorkers(parts, run);
}

/// A flag that one thread raises and one thread waits for; each signal is consumed by one wait.
struct WorkerEvent;

/// A new event with its flag clear, or null when there is no memory. Destroy it with eventDestroy.
WorkerEvent *eventCreate();
/// Destroys the event; -2 for null, else 0. The memory context is not used.
int64_t eventDestroy(MemContext *memory, WorkerEvent *event);
/// Consumes the flag, waiting for it when the timeout is kWaitForever; any other timeout only polls and
/// reports success either way. -2 for null, -1 when a system call failed, else 0.
int64_t eventWait(WorkerEvent *event, int timeout);
/// Raises the flag and wakes a waiter. -2 for null, -1 when the signal failed, else 0.
int64_t eventSignal(WorkerEvent *event);

} // namespace hdr
