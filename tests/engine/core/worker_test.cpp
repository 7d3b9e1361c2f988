// SPDX-License-Identifier: MIT
#include "engine/core/worker.h"

#include <gtest/gtest.h>

namespace hdr {
namespace {

TEST(Worker, NothingToRunIsIgnored) {
    EXPECT_EQ(workerStart(nullptr, nullptr), 0u);
    EXPECT_EQ(workerWait(0, kWaitForever), 0);
    EXPECT_EQ(workerJoin(0), 0);
}

TEST(Worker, FourTasksRunAndAreJoined) {
    std::array<int, 4> tasks = {1, 2, 3, 4};
    runOnFourWorkers(tasks, [](int &task) { task *= 10; });
    EXPECT_EQ(tasks, (std::array<int, 4>{10, 20, 30, 40}));
}

TEST(WorkerEvent, SignalIsConsumedByOneWait) {
    EXPECT_EQ(eventWait(nullptr, 0), -2);
    EXPECT_EQ(eventSignal(nullptr), -2);
    EXPECT_EQ(eventDestroy(nullptr, nullptr), -2);

    struct Exchange {
        WorkerEvent *request = eventCreate();
        WorkerEvent *answer = eventCreate();
        int value = 0;
    } exchange;
    // A poll of a clear flag reports success and leaves it clear: the wait below still blocks until the
    // signal.
    EXPECT_EQ(eventWait(exchange.answer, 0), 0);
    const WorkerThread thread = workerStart(
        [](void *argument) -> void * {
            Exchange *shared = static_cast<Exchange *>(argument);
            eventWait(shared->request, kWaitForever);
            shared->value++;
            eventSignal(shared->answer);
            return nullptr;
        },
        &exchange);
    exchange.value = 41;
    EXPECT_EQ(eventSignal(exchange.request), 0);
    EXPECT_EQ(eventWait(exchange.answer, kWaitForever), 0);
    EXPECT_EQ(exchange.value, 42);
    workerWait(thread, kWaitForever);
    EXPECT_EQ(eventDestroy(nullptr, exchange.request), 0);
    EXPECT_EQ(eventDestroy(nullptr, exchange.answer), 0);
}

} // namespace
} // namespace hdr
