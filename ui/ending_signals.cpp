// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/ending_signals.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <utility>

#include <QSocketNotifier>

#include <fcntl.h>
#include <unistd.h>

namespace tristop {
namespace {

constexpr std::array kSignals = {SIGINT, SIGTERM, SIGHUP};
std::array<struct sigaction, kSignals.size()> formerActions;
/// A pipe from the handler, which may do next to nothing, to the event loop.
std::array<int, 2> ends = {-1, -1};

void passOn(int signal) {
    const int error = errno;
    const auto byte = static_cast<unsigned char>(signal);
    [[maybe_unused]] const ssize_t written = ::write(ends[1], &byte, 1);
    errno = error;
}

} // namespace

EndingSignals::EndingSignals(QObject *parent) : QObject(parent) {
    if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    auto *notifier = new QSocketNotifier(ends[0], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] {
        unsigned char byte = 0;
        if (::read(ends[0], &byte, 1) == 1)
            emit received(byte);
    });
    for (size_t i = 0; i < kSignals.size(); ++i) {
        ::sigaction(kSignals[i], nullptr, &formerActions[i]);
        if (formerActions[i].sa_handler == SIG_IGN)
            continue;
        struct sigaction action {};
        action.sa_handler = passOn;
        action.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
        ::sigaction(kSignals[i], &action, nullptr);
    }
}

EndingSignals::~EndingSignals() {
    if (ends[0] < 0)
        return;
    for (size_t i = 0; i < kSignals.size(); ++i)
        ::sigaction(kSignals[i], &formerActions[i], nullptr);
    for (int &end : ends)
        ::close(std::exchange(end, -1));
}

} // namespace tristop
