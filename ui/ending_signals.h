// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

namespace tristop {

/**
 * Tells in the event loop that SIGINT, SIGTERM or SIGHUP asks the program to end, unless the signal was
 * ignored at its start. A second one of a kind ends the program at once. One object at a time; the signals
 * are as before when it goes.
 */
class EndingSignals : public QObject {
    Q_OBJECT

public:
    explicit EndingSignals(QObject *parent = nullptr);
    ~EndingSignals() override;

signals:
    void received(int signal);
};

} // namespace tristop
