// SPDX-License-Identifier: GPL-3.0-or-later
// Runs tests of controls and windows, without a display and away from the settings of the user.
#include <QApplication>
#include <QStandardPaths>

#include <gtest/gtest.h>

int main(int argc, char **argv) {
    testing::InitGoogleTest(&argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QStandardPaths::setTestModeEnabled(true);
    QApplication application(argc, argv);
    QCoreApplication::setOrganizationName("tristop-test");
    return RUN_ALL_TESTS();
}
