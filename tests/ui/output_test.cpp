// SPDX-License-Identifier: GPL-3.0-or-later
// Pages, shared files and the open panel's rules.
#include <QDBusContext>
#include <QDBusServer>
#include <QFileInfo>
#include <QPageLayout>
#include <QPainter>
#include <QPrinter>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QTest>

#include <gtest/gtest.h>

#include "ui/open_controller.h"
#include "ui/print_view.h"
#include "ui/sharing.h"
#include "ui/status_line.h"

namespace tristop {
namespace {

TEST(PrintViewTest, drawsThePictureInTheMiddle) {
    QImage picture(20, 10, QImage::Format_RGB32);
    picture.fill(Qt::red);
    QImage page(100, 100, QImage::Format_RGB32);
    page.fill(Qt::white);
    QPainter painter(&page);
    IIPrintView(QRectF(10, 10, 80, 80), picture).drawRect(painter);
    IIPrintView(QRectF(0, 0, 10, 10), {}).drawRect(painter);
    painter.end();
    for (const QPoint inside : {QPoint(10, 30), QPoint(89, 69), QPoint(50, 50)})
        EXPECT_EQ(page.pixelColor(inside), QColor(Qt::red));
    for (const QPoint outside : {QPoint(9, 50), QPoint(90, 50), QPoint(50, 29), QPoint(50, 70), QPoint(5, 5)})
        EXPECT_EQ(page.pixelColor(outside), QColor(Qt::white));
}

TEST(PrintViewTest, givesThePageEqualMargins) {
    // 12.24 in single precision is less than 12.24.
    const QPageLayout page(QPageSize(QPageSize::A4), QPageLayout::Portrait, QMarginsF(50, 50, 50, 50),
                           QPageLayout::Point, QMarginsF(12.24, 8, 10, 30.1));
    const QMarginsF margins = withEqualMargins(page).margins();
    EXPECT_NEAR(margins.left(), 12.24, 1e-5);
    EXPECT_NEAR(margins.right(), 12.24, 1e-5);
    EXPECT_NEAR(margins.top(), 30.1, 1e-5);
    EXPECT_NEAR(margins.bottom(), 30.1, 1e-5);
}

TEST(PrintViewTest, printsOnOnePage) {
    const QTemporaryDir folder;
    QPrinter printer;
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(folder.filePath("page.pdf"));
    printer.setPageMargins(QMarginsF(30, 40, 50, 60), QPageLayout::Point);
    QImage picture(20, 10, QImage::Format_RGB32);
    picture.fill(Qt::red);
    EXPECT_TRUE(printPicture(printer, picture));
    const QMarginsF margins = printer.pageLayout().margins(QPageLayout::Point);
    EXPECT_EQ(margins, printer.pageLayout().minimumMargins());
    EXPECT_GT(QFile(folder.filePath("page.pdf")).size(), 0);
    printer.setOutputFileName("/nowhere/page.pdf");
    EXPECT_FALSE(printPicture(printer, picture));
}

/// The services of a desktop that answer, refuse or keep silent.
class Desktop : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

public:
    enum class Manner { Answers, Refuses, KeepsSilent };
    Manner manner = Manner::Answers;
    QStringList shown;

public slots:
    void ShowItems(const QStringList &uris, const QString &) {
        shown = uris;
        if (manner == Manner::Refuses)
            sendErrorReply(QDBusError::AccessDenied, "no");
        if (manner == Manner::KeepsSilent)
            setDelayedReply(true);
    }
};

class SharingTest : public testing::Test {
protected:
    SharingTest() {
        QObject::connect(&server, &QDBusServer::newConnection, [this](QDBusConnection connection) {
            connection.registerObject("/org/freedesktop/FileManager1", &desktop,
                                      QDBusConnection::ExportAllSlots);
            connections.append(connection);
        });
        server.setAnonymousAuthenticationAllowed(true);
    }
    ~SharingTest() override { QDBusConnection::disconnectFromPeer("tristop-test"); }

    QDBusServer server{"unix:tmpdir=/tmp"};
    Desktop desktop;
    QList<QDBusConnection> connections;
    QStringList launched;
    bool canLaunch = true;
    Sharing sharing{QDBusConnection::connectToPeer(server.address(), "tristop-test"),
                    [this](const QString &program, const QStringList &arguments) {
                        launched = QStringList(program) + arguments;
                        return canLaunch;
                    },
                    300};
};

TEST_F(SharingTest, prefersTheDesktopsServices) {
    sharing.showInFolder("/pictures/a b.png");
    ASSERT_TRUE(QTest::qWaitFor([this] { return !desktop.shown.isEmpty(); }));
    EXPECT_EQ(desktop.shown.constFirst(), "file:///pictures/a%20b.png");
    QTest::qWait(50);
    EXPECT_TRUE(launched.isEmpty());
}

TEST_F(SharingTest, startsACommandWhereAServiceRefusesOrKeepsSilent) {
    for (const auto manner : {Desktop::Manner::Refuses, Desktop::Manner::KeepsSilent}) {
        launched.clear();
        desktop.manner = manner;
        sharing.showInFolder("/pictures/a b.png");
        EXPECT_TRUE(launched.isEmpty());
        ASSERT_TRUE(QTest::qWaitFor([this] { return !launched.isEmpty(); }));
        EXPECT_EQ(launched, QStringList({"xdg-open", "/pictures"}));
    }
}

TEST_F(SharingTest, tellsWhenNothingWorks) {
    canLaunch = false;
    QSignalSpy failed(&sharing, &Sharing::failed);
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    sharing.sendByEmail(file.fileName()); // nobody answers for mail here
    ASSERT_TRUE(failed.wait());
    EXPECT_EQ(launched, QStringList({"xdg-email", "--subject", QFileInfo(file).fileName(), "--attach",
                                     file.fileName()}));
    sharing.openWithProgram(file.fileName());
    ASSERT_TRUE(failed.wait());
    EXPECT_EQ(launched, QStringList({"xdg-open", file.fileName()}));
    launched.clear();
    sharing.openWithProgram("/pictures/gone.jpg");
    EXPECT_EQ(failed.count(), 3);
    EXPECT_TRUE(launched.isEmpty());
}

TEST(OpenPanelTest, takesPhotographsOnly) {
    for (const char *name : {"a.jpg", "a.JPEG", "a.nef", "a.CR3", "a.dng"})
        EXPECT_TRUE(CBHDROpenController::allowsFile(QUrl::fromLocalFile(name))) << name;
    for (const char *name : {"a.tif", "a.png", "a", "jpg"})
        EXPECT_FALSE(CBHDROpenController::allowsFile(QUrl::fromLocalFile(name))) << name;
    const QString photographs = CBHDROpenController::nameFilters().constFirst();
    for (const char *pattern : {"*.jpg ", "*.nef ", "*.x3f)"})
        EXPECT_TRUE(photographs.contains(pattern)) << pattern;
    EXPECT_FALSE(photographs.contains("tif"));
}

} // namespace
} // namespace tristop

#include "output_test.moc"
