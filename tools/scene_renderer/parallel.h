// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

namespace tristop::scene {

/// Calls body(i) once for every i in [0, count) on `threads` threads (0: as many as the machine has), in no
/// particular order. The body must not throw.
template <typename Body>
void parallelFor(int count, int threads, const Body &body) {
    if (threads <= 0)
        threads = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
    std::atomic<int> next = 0;
    const auto work = [&] {
        for (int i = next++; i < count; i = next++)
            body(i);
    };
    std::vector<std::jthread> helpers;
    for (int i = 1; i < std::min(threads, count); ++i)
        helpers.emplace_back(work);
    work();
}

} // namespace tristop::scene
