// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/background_worker.h"

#include <utility>

namespace tristop {

BackgroundWorker::BackgroundWorker() : thread([this] { work(); }) {}

BackgroundWorker::~BackgroundWorker() {
    {
        const std::lock_guard lock(mutex);
        ending = true;
        tasks.clear();
    }
    changed.notify_one();
    thread.join();
}

void BackgroundWorker::start(std::function<void()> task) {
    {
        const std::lock_guard lock(mutex);
        tasks.push_back(std::move(task));
    }
    changed.notify_one();
}

void BackgroundWorker::work() {
    for (;;) {
        std::function<void()> task;
        {
            std::unique_lock lock(mutex);
            changed.wait(lock, [this] { return ending || !tasks.empty(); });
            if (ending)
                return;
            task = std::move(tasks.front());
            tasks.pop_front();
        }
        task();
    }
}

} // namespace tristop
