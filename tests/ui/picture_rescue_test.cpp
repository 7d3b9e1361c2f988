// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/picture_rescue.h"

#include <csignal>
#include <cstdlib>
#include <mutex>

#include <QApplication>
#include <QColorSpace>
#include <QDir>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include "tests/app/photograph_files.h"
#include "ui/ending_signals.h"
#include "ui/localized_text.h"

namespace tristop {
namespace {

using ::testing::ExitedWithCode;
using testing::TemporaryFolder;
using testing::writeFile;

QImage smallPicture() {
    QImage picture(5, 3,
                   QImage::Format_RGB32); // rows whose length is no multiple of four in three bytes a pixel
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 5; ++x)
            picture.setPixel(x, y, qRgb(10 * x, 20 * y, 200 - x));
    return picture;
}

class PictureRescueTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        static std::once_flag translated; // the suite may be repeated
        std::call_once(translated, [] { loadTranslations(*qApp, QLocale(QLocale::English)); });
    }
    QString file(const char *name) const { return QString::fromStdString(folder.path(name)); }
    QStringList rescued(const char *place) const {
        return QDir(file(place) + "/Tristop").entryList({"*.png"}, QDir::Files);
    }

    TemporaryFolder folder;
};

TEST_F(PictureRescueTest, WritesThePictureWhereItCanAndTellsTheNextStartOnce) {
    writeFile(folder.path("occupied"), {}); // no folder can be made in a file
    PictureRescue rescue({file("occupied"), file("place")}, file("data/note"));
    EXPECT_EQ(rescue.takeRescued(), QString());
    rescue.setUnsavedPicture(smallPicture());
    const QString path = QString::fromStdString(rescue.rescue());
    EXPECT_EQ(QFileInfo(path).path(), file("place") + "/Tristop");
    QImage written = QImage(path).convertToFormat(QImage::Format_RGB32);
    written.setColorSpace({});
    EXPECT_EQ(written, smallPicture());
    EXPECT_EQ(rescue.rescue(), "") << "the same picture again";
    EXPECT_EQ(rescue.takeRescued(), path);
    EXPECT_EQ(rescue.takeRescued(), QString());

    rescue.setUnsavedPicture(smallPicture()); // within the same second
    rescue.rescue();
    EXPECT_EQ(rescued("place").size(), 2);
}

TEST_F(PictureRescueTest, HasNothingToTellWithoutAPictureOrAPlace) {
    PictureRescue rescue({file("place")}, file("note"));
    rescue.setUnsavedPicture(smallPicture());
    rescue.setUnsavedPicture({}); // saved
    EXPECT_EQ(rescue.rescue(), "");
    EXPECT_FALSE(QFileInfo::exists(file("place")));
    PictureRescue nowhere({}, file("note"));
    nowhere.setUnsavedPicture(smallPicture());
    EXPECT_EQ(nowhere.rescue(), "");
    EXPECT_EQ(nowhere.takeRescued(), QString());
}

TEST_F(PictureRescueTest, ActsAtAnExitThatTheApplicationHasNotAskedFor) {
    // A child that is started afresh: a forked one would wait for threads that it lacks. It has another
    // folder.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    constexpr const char *kPlace = "TRISTOP_TEST_PLACE";
    if (!qEnvironmentVariableIsSet(kPlace))
        qputenv(kPlace, QFile::encodeName(file("place")));
    const auto leave = [&](bool unasked) {
        {
            PictureRescue rescue({qEnvironmentVariable(kPlace)}, file("note"));
            rescue.setUnsavedPicture(smallPicture());
            if (unasked)
                std::exit(3);
        }
        std::exit(4);
    };
    EXPECT_EXIT(leave(true), ExitedWithCode(3), "Tristop/Unsaved .*\\.png");
    EXPECT_EQ(rescued("place").size(), 1);
    EXPECT_EXIT(leave(false), ExitedWithCode(4), "");
    EXPECT_EQ(rescued("place").size(), 1);
    qunsetenv(kPlace);
}

TEST(EndingSignals, AreToldInTheEventLoop) {
    struct sigaction before {};
    ::sigaction(SIGHUP, nullptr, &before);
    std::signal(SIGINT, SIG_IGN);
    {
        EndingSignals ending;
        QSignalSpy received(&ending, &EndingSignals::received);
        std::raise(SIGINT); // was ignored and stays so
        std::raise(SIGTERM);
        std::raise(SIGHUP);
        EXPECT_TRUE(received.isEmpty());
        ASSERT_TRUE(QTest::qWaitFor([&] { return received.count() == 2; }));
        EXPECT_EQ(received[0][0].toInt(), SIGTERM);
        EXPECT_EQ(received[1][0].toInt(), SIGHUP);
    }
    std::signal(SIGINT, SIG_DFL);
    struct sigaction after {};
    ::sigaction(SIGHUP, nullptr, &after);
    EXPECT_EQ(after.sa_handler, before.sa_handler);
}

} // namespace
} // namespace tristop
