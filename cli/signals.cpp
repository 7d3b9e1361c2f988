// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/signals.h"

#include <atomic>
#include <csignal>

#include <unistd.h>

#include "app/file_writer.h"

namespace tristop {
namespace {

std::atomic<int> stopRequest = 0;
static_assert(std::atomic<int>::is_always_lock_free);

void cleanUpAndEnd(int signal) {
    removeUnfinishedFiles();
    std::signal(signal, SIG_DFL);
    std::raise(signal); // takes effect as soon as this handler has returned
}

void stopOrEnd(int signal) {
    if (stopRequest.exchange(signal) != 0)
        cleanUpAndEnd(signal);
}

void install(void (*handler)(int)) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction inherited {};
        ::sigaction(signal, nullptr, &inherited);
        if (inherited.sa_handler == SIG_IGN)
            continue;
        struct sigaction action {};
        action.sa_handler = handler;
        action.sa_flags = SA_RESTART;
        ::sigaction(signal, &action, nullptr);
    }
    std::signal(SIGXFSZ, SIG_IGN);
}

} // namespace

void handleSignals() {
    install(cleanUpAndEnd);
}

void stopOnSignals() {
    install(stopOrEnd);
}

int stopSignal() {
    return stopRequest;
}

void endBySignal(int signal) {
    std::signal(signal, SIG_DFL);
    std::raise(signal);
    ::_exit(128 + signal);
}

} // namespace tristop
