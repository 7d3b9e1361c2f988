// SPDX-License-Identifier: MIT
#include "engine/core/worker.h"

#include <cstdlib>
#include <pthread.h>

namespace hdr {

static_assert(sizeof(pthread_t) <= sizeof(WorkerThread));

WorkerThread workerStart(WorkerEntry entry, void *argument) {
    pthread_t thread;
    if (!entry || pthread_create(&thread, nullptr, entry, argument) != 0)
        return 0;
    return static_cast<WorkerThread>(thread);
}

int64_t workerWait(WorkerThread thread, int /*timeout*/) {
    return workerJoin(thread);
}

int64_t workerJoin(WorkerThread thread) {
    if (thread != 0)
        pthread_join(static_cast<pthread_t>(thread), nullptr);
    return 0;
}

int64_t workerClose(WorkerThread /*thread*/) {
    return 0;
}

struct WorkerEvent {
    pthread_mutex_t mutex;
    pthread_cond_t condition;
    int64_t signalled;
};

WorkerEvent *eventCreate() {
    WorkerEvent *event = static_cast<WorkerEvent *>(std::malloc(sizeof(WorkerEvent)));
    if (!event)
        return nullptr;
    pthread_mutex_init(&event->mutex, nullptr);
    pthread_cond_init(&event->condition, nullptr);
    event->signalled = 0;
    return event;
}

int64_t eventDestroy(MemContext * /*memory*/, WorkerEvent *event) {
    if (!event)
        return -2;
    pthread_mutex_destroy(&event->mutex);
    pthread_cond_destroy(&event->condition);
    std::free(event);
    return 0;
}

int64_t eventWait(WorkerEvent *event, int timeout) {
    if (!event)
        return -2;
    if (pthread_mutex_lock(&event->mutex) != 0)
        return -1;
    int failed = 0;
    if (event->signalled) {
        event->signalled = 0;
    } else if (timeout == kWaitForever) {
        // One wait without a loop: a spurious wake-up counts as the signal.
        failed |= pthread_cond_wait(&event->condition, &event->mutex);
        event->signalled = 0;
    }
    failed |= pthread_mutex_unlock(&event->mutex);
    return failed ? -1 : 0;
}

int64_t eventSignal(WorkerEvent *event) {
    if (!event)
        return -2;
    pthread_mutex_lock(&event->mutex);
    event->signalled = 1;
    const int failed = pthread_cond_signal(&event->condition);
    pthread_mutex_unlock(&event->mutex);
    return failed ? -1 : 0;
}

} // namespace hdr
