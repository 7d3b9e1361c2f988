// SPDX-License-Identifier: GPL-3.0-or-later
// Runs tests of controls and windows, without a display and away from the files of the user and of tests that
// run at the same time.
#include <QApplication>
#include <QTemporaryDir>

#include <gtest/gtest.h>

int main(int argc, char **argv) {
    testing::InitGoogleTest(&argc, argv);
    const QTemporaryDir home;
    for (const char *folder : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"})
        qputenv(folder, home.path().toUtf8());
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    QCoreApplication::setOrganizationName("tristop-test");
    return RUN_ALL_TESTS();
}
