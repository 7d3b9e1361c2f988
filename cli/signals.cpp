// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/signals.h"

#include <csignal>

#include "app/file_writer.h"

namespace tristop {
namespace {

void cleanUpAndEnd(int signal) {
    removeUnfinishedFile();
    std::raise(signal); // with its usual effect, as soon as this handler has returned
}

} // namespace

void handleSignals() {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction inherited {};
        ::sigaction(signal, nullptr, &inherited);
        if (inherited.sa_handler == SIG_IGN)
            continue;
        struct sigaction action {};
        action.sa_handler = cleanUpAndEnd;
        action.sa_flags = static_cast<int>(SA_RESETHAND);
        ::sigaction(signal, &action, nullptr);
    }
    std::signal(SIGXFSZ, SIG_IGN);
}

} // namespace tristop
