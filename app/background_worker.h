// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace tristop {

/// One thread that does tasks one after the other. Destroying it drops the tasks that have not begun and
/// waits for the one underway.
class BackgroundWorker {
public:
    BackgroundWorker();
    ~BackgroundWorker();
    BackgroundWorker(const BackgroundWorker &) = delete;
    BackgroundWorker &operator=(const BackgroundWorker &) = delete;

    /// The task must not throw.
    void start(std::function<void()> task);

private:
    void work();

    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::function<void()>> tasks;
    bool ending = false;
    std::thread thread;
};

} // namespace tristop
