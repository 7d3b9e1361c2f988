// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/editing_view_controller.h"

#include <filesystem>
#include <mutex>

#include <QApplication>
#include <QComboBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include <gtest/gtest.h>

#include "IICommon/colored_button.h"
#include "app/file_error.h"
#include "tests/app/photograph_files.h"
#include "tools/scene_renderer/scene.h"
#include "ui/adjust_slider.h"
#include "ui/image_view.h"
#include "ui/localized_text.h"
#include "ui/popup_image_view.h"
#include "ui/save_view_controller.h"
#include "ui/waiting_window_controller.h"
#include "ui/warning_message_controller.h"

namespace tristop {
namespace {

using testing::TemporaryFolder;
using testing::TestPicture;

constexpr int kWidth = 300, kHeight = 200;
constexpr int kPatience = 60000;

/// A window with the controller in it, and a bracket of photographs.
class EditingTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        static std::once_flag translated; // the suite may be repeated
        std::call_once(translated, [] { loadTranslations(*qApp, QLocale(QLocale::English)); });
        bracket = new TemporaryFolder;
        scene::SceneSettings settings;
        settings.width = kWidth;
        settings.height = kHeight;
        for (int shot = 0; shot < 3; ++shot) {
            TestPicture photograph(kWidth, kHeight);
            photograph.samples = scene::render(settings, shot).samples;
            writeJpeg(bracketFile(shot).toStdString(), photograph);
        }
    }
    static void TearDownTestSuite() {
        delete bracket;
        bracket = nullptr;
    }

    EditingTest() : window(std::make_unique<QWidget>()), controller(new IIEditingViewController) {
        window->resize(900, 600);
        (new QVBoxLayout(window.get()))->addWidget(controller);
        QObject::connect(controller, &IIEditingViewController::statusTold,
                         [this](const QString &text) { told = text; });
        QObject::connect(controller, &IIEditingViewController::terminateAnswered,
                         [this](bool quit) { answer = quit; });
        window->show();
    }

    static QString bracketFile(int shot) {
        return QString::fromStdString(bracket->path(std::to_string(shot) + ".jpg"));
    }
    static QList<QUrl> bracketFiles() {
        return {QUrl::fromLocalFile(bracketFile(0)), QUrl::fromLocalFile(bracketFile(1)),
                QUrl::fromLocalFile(bracketFile(2))};
    }
    QString file(const char *name) const { return QString::fromStdString(folder.path(name)); }

    void waitForIdle() {
        ASSERT_TRUE(QTest::qWaitFor([this] { return !controller->isRunning(); }, kPatience));
        EXPECT_EQ(controller->waitingWindowController(), nullptr);
    }
    void open() {
        controller->openURLs(bracketFiles());
        waitForIdle();
        ASSERT_TRUE(controller->hasImage());
    }
    QImage picture() const { return controller->imageView()->image(); }
    QImage thumbnail(IIPopupImageView *view) const { return view->image(); }

    IIWarningMessageController *sheet() const { return controller->warningMessageController(); }
    QFileDialog *panel() const {
        for (QFileDialog *dialog : window->findChildren<QFileDialog *>())
            if (dialog->isVisible())
                return dialog;
        return nullptr;
    }
    static void type(QFileDialog *dialog, const QString &name) {
        dialog->findChild<QLineEdit *>("fileNameEdit")->setText(name);
    }
    static void accept(QDialog *dialog) { dialog->accept(); }
    /// Saves under a name with the panel that is shown.
    void saveAs(const QString &path, const char *type = "public.png") {
        QFileDialog *shown = panel();
        ASSERT_NE(shown, nullptr);
        controller->saveViewController()->setSaveType(type);
        this->type(shown, path);
        accept(shown);
        waitForIdle();
    }

    static TemporaryFolder *bracket;
    TemporaryFolder folder;
    std::unique_ptr<QWidget> window;
    IIEditingViewController *controller;
    QString told;
    std::optional<bool> answer;
};

TemporaryFolder *EditingTest::bracket = nullptr;

double brightness(const QImage &image) {
    double sum = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            sum += qGray(image.pixel(x, y));
    return sum / image.width() / image.height();
}

/// The largest difference of any channel of two pictures of one size.
int largestDifference(const QImage &a, const QImage &b) {
    int largest = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) {
            const QRgb one = a.pixel(x, y), other = b.pixel(x, y);
            largest = std::max({largest, std::abs(qRed(one) - qRed(other)),
                                std::abs(qGreen(one) - qGreen(other)), std::abs(qBlue(one) - qBlue(other))});
        }
    return largest;
}

bool isGrey(const QImage &image) {
    for (int y = 0; y < image.height(); y += 7)
        for (int x = 0; x < image.width(); x += 7) {
            const QColor color = image.pixelColor(x, y);
            if (color.red() != color.green() || color.green() != color.blue())
                return false;
        }
    return true;
}

TEST_F(EditingTest, mergesThreePhotographsAndShowsThem) {
    EXPECT_FALSE(controller->saveButn()->isVisible());
    EXPECT_FALSE(controller->shareButn()->isVisible());
    EXPECT_FALSE(controller->isDirty());
    EXPECT_FALSE(controller->validateUserInterfaceItem("print:"));
    EXPECT_TRUE(controller->displayImage().isNull());
    controller->zoomFit(); // without a picture nothing happens
    EXPECT_EQ(controller->zoomFactor(), 1.0);

    controller->openURLs(bracketFiles());
    ASSERT_NE(controller->waitingWindowController(), nullptr) << "shown before the work starts";
    EXPECT_FALSE(controller->waitingWindowController()->waitingDescriptor().isEmpty());
    waitForIdle();

    EXPECT_EQ(picture().size(), QSize(kWidth, kHeight));
    EXPECT_EQ(controller->zoomMode(), 0);
    EXPECT_TRUE(controller->needSave());
    EXPECT_TRUE(controller->saveButn()->isVisible());
    EXPECT_TRUE(controller->shareButn()->isVisible());
    EXPECT_TRUE(controller->validateUserInterfaceItem("print:"));
    IIAdjustViewController &panel = *controller->adjustViewController();
    EXPECT_TRUE(panel.ghostSlider()->isEnabled());
    EXPECT_TRUE(panel.sizeField()->text().contains("300x200"));
    const double dark = brightness(thumbnail(panel.leftImageView()));
    const double middle = brightness(thumbnail(panel.middleImageView()));
    const double bright = brightness(thumbnail(panel.rightImageView()));
    EXPECT_LT(dark, middle);
    EXPECT_LT(middle, bright);
    EXPECT_LT(dark, brightness(picture()));
    EXPECT_LT(brightness(picture()), bright);
    EXPECT_EQ(controller->displayImage().convertToFormat(QImage::Format_RGB32), picture());
}

TEST_F(EditingTest, keepsTheDocumentWhenACheckFails) {
    open();
    const QImage before = picture();
    const qint64 thumbnailBefore = thumbnail(controller->adjustViewController()->leftImageView()).cacheKey();
    const auto endsWith = [&](int which, const QString &bad, const char *key) {
        told.clear();
        QList<QUrl> urls = bracketFiles();
        urls[which] = QUrl::fromLocalFile(bad);
        controller->openURLs(urls);
        waitForIdle();
        EXPECT_EQ(told.toStdString(), (QFileInfo(bad).fileName() + ": " + localizedText(key)).toStdString());
        EXPECT_EQ(picture().cacheKey(), before.cacheKey());
        EXPECT_EQ(thumbnail(controller->adjustViewController()->leftImageView()).cacheKey(), thumbnailBefore);
        EXPECT_EQ(sheet(), nullptr);
    };
    writeJpeg(folder.path("small.jpg"), TestPicture(kWidth, 99));
    writeJpeg(folder.path("turned.jpg"), TestPicture(kWidth, kHeight));
    testing::addExif(folder.path("turned.jpg"), {{"Exif.Image.Orientation", "6"}});
    testing::writeFile(folder.path("broken.jpg"), {0xFF, 0xD8, 0xFF, 0xE0, 1, 2});
    endsWith(0, file("small.jpg"), "IDS_RESOLUTION_SMALL_ERROR");
    endsWith(1, file("turned.jpg"), "IDS_RESOLUTION_DIFFERENT_ERROR");
    endsWith(2, file("broken.jpg"), "IDS_LOAD_FAILED");
    endsWith(1, file("vanished.jpg"), "IDS_LOAD_FAILED");

    controller->openURLs(bracketFiles().mid(1));
    EXPECT_FALSE(controller->isRunning());
    EXPECT_EQ(told, localizedText("IDS_TOO_MANY_ERROR"));

    // The bridge still has its inputs and the merge.
    controller->effectSettingsChanged(20, 0, 0);
    waitForIdle();
    EXPECT_NE(picture(), before);
}

TEST_F(EditingTest, keepsThePictureWhenTheMergeFails) {
    open();
    const QImage before = picture();
    controller->engineController()->setMeEngine(nullptr);
    controller->process(10, 0, 10, 6);
    waitForIdle();
    EXPECT_EQ(told, localizedText("IDS_MERGE_FAILED"));
    EXPECT_EQ(picture().cacheKey(), before.cacheKey());
}

TEST_F(EditingTest, tellsOfAPhotographThatShowsSomethingElse) {
    scene::SceneSettings settings;
    settings.width = kWidth;
    settings.height = kHeight;
    TestPicture mirrored(kWidth, kHeight);
    mirrored.samples = scene::render(settings, 2).samples;
    for (int y = 0; y < kHeight / 2; ++y)
        for (int x = 0; x < kWidth; ++x) {
            const auto upper = mirrored.at(x, y);
            mirrored.set(x, y, mirrored.at(x, kHeight - 1 - y));
            mirrored.set(x, kHeight - 1 - y, upper);
        }
    writeJpeg(folder.path("mirrored.jpg"), mirrored);
    QList<QUrl> urls = bracketFiles();
    urls[2] = QUrl::fromLocalFile(file("mirrored.jpg"));
    const std::string expected = "mirrored.jpg: " + localizedText("IDS_MERGE_LEFT_OUT").toStdString();
    controller->openURLs(urls);
    waitForIdle();
    EXPECT_TRUE(controller->hasImage());
    EXPECT_EQ(told.toStdString(), expected);
    told.clear();
    controller->process(10, 0, 10, 6);
    waitForIdle();
    EXPECT_EQ(told.toStdString(), expected);
}

TEST_F(EditingTest, rendersAnEffectOfTheKeptMerge) {
    controller->effectSettingsChanged(0, 0, 2);
    waitForIdle();
    EXPECT_EQ(told, localizedText("IDS_MERGE_AGAIN"));
    EXPECT_FALSE(controller->hasImage());

    open();
    controller->zoomActual();
    const QImage merged = picture();
    EXPECT_FALSE(isGrey(merged));
    IIAdjustViewController &panel = *controller->adjustViewController();
    panel.effectPopButn()->setCurrentIndex(2);
    panel.styleChanged();
    waitForIdle();
    EXPECT_TRUE(isGrey(picture()));
    EXPECT_EQ(controller->zoomMode(), 1) << "only an opening refits";
    EXPECT_EQ(panel.effectPopButn()->currentIndex(), 2);
    EXPECT_TRUE(panel.sizeField()->text().contains("300x200"));

    // Merging again keeps the effect; opening again ends it.
    controller->engineSettingsChanged(90, 40, 10, 6);
    waitForIdle();
    EXPECT_TRUE(isGrey(picture()));
    EXPECT_EQ(controller->zoomMode(), 1);
    EXPECT_EQ(panel.effectPopButn()->currentIndex(), 2);
    controller->engineSettingsChanged(45, 40, 10, 6);
    waitForIdle();
    controller->openURLs(bracketFiles());
    waitForIdle();
    EXPECT_EQ(picture(), merged);
    EXPECT_EQ(controller->zoomMode(), 0);
    EXPECT_EQ(panel.effectPopButn()->currentIndex(), 0);
}

TEST_F(EditingTest, appliesTheLatestOfSeveralQuickChanges) {
    open();
    controller->engineSettingsChanged(100, 40, 10, 6);
    waitForIdle();
    const QImage wanted = picture();
    QSignalSpy ended(controller, &IIEditingViewController::runEnded);
    controller->engineSettingsChanged(0, 40, 10, 6);
    controller->engineSettingsChanged(50, 40, 10, 6);
    controller->engineSettingsChanged(100, 40, 10, 6);
    controller->effectSettingsChanged(0, 0, 0);
    ASSERT_TRUE(QTest::qWaitFor([&] { return ended.count() == 3; }, kPatience));
    EXPECT_EQ(controller->engineController()->toneLength(), 100);
    EXPECT_EQ(picture(), wanted);
    EXPECT_FALSE(controller->isRunning());
}

TEST_F(EditingTest, savesAndOpensAfterTheRunUnderway) {
    open();
    const QImage before = picture();
    controller->saveAs();
    controller->engineSettingsChanged(100, 40, 10, 6); // a slider's step, told while the panel is shown
    saveAs(file("new.png"));
    EXPECT_NE(picture(), before);
    EXPECT_EQ(largestDifference(QImage(file("new.png")), picture()), 0) << "the picture that is shown";
    EXPECT_FALSE(controller->needSave());

    controller->engineSettingsChanged(45, 40, 10, 6);
    QList<QUrl> urls = bracketFiles();
    std::swap(urls[0], urls[2]);
    controller->openURLs(urls);
    waitForIdle();
    IIAdjustViewController &side = *controller->adjustViewController();
    EXPECT_GT(brightness(thumbnail(side.leftImageView())), brightness(thumbnail(side.rightImageView())));
}

TEST_F(EditingTest, endsCleanlyDuringARun) {
    open();
    controller->engineSettingsChanged(80, 40, 10, 6);
    controller->effectSettingsChanged(30, 0, 0);
    window.reset();
    QCoreApplication::processEvents();

    auto other = std::make_unique<IIEditingViewController>();
    other->openURLs(bracketFiles());
    other.reset();
    QCoreApplication::processEvents();
}

TEST_F(EditingTest, zoomsByCommandsSegmentsAndGestures) {
    open();
    EXPECT_EQ(controller->zoomFactor(), 1.0) << "a small picture is not enlarged";
    controller->zoom(1);
    EXPECT_EQ(controller->zoomFactor(), 1.5);
    EXPECT_EQ(controller->zoomMode(), 2);
    EXPECT_EQ(controller->imageView()->zoom(), 1.5);
    controller->zoom(0);
    controller->zoom(0);
    EXPECT_EQ(controller->zoomFactor(), 0.7);
    controller->zoom(4);
    EXPECT_EQ(controller->zoomFactor(), 0.7);
    controller->zoom(3);
    EXPECT_EQ(controller->zoomMode(), 1);
    EXPECT_EQ(controller->zoomFactor(), 1.0);
    controller->imageClipMagnify(nullptr, -0.5);
    EXPECT_EQ(controller->zoomFactor(), 0.5);
    EXPECT_EQ(controller->zoomMode(), 2);
    controller->imageClipMagnify(nullptr, -0.99);
    EXPECT_EQ(controller->zoomFactor(), 0.03);
    controller->imageClipScrollWheel(nullptr, 2);
    EXPECT_DOUBLE_EQ(controller->zoomFactor(), 0.23);
    controller->imageClipDoubleClick(nullptr);
    EXPECT_EQ(controller->zoomMode(), 0);
    controller->imageClipDoubleClick(nullptr);
    EXPECT_EQ(controller->zoomMode(), 1);
    controller->zoom(2);

    // A fitted picture stays fitted.
    controller->imageClip()->setMinimumSize(0, 0);
    window->layout()->setSizeConstraint(QLayout::SetNoConstraint);
    controller->imageClip()->resize(150, 400);
    QCoreApplication::processEvents();
    EXPECT_DOUBLE_EQ(controller->zoomFactor(), 0.5);
}

TEST_F(EditingTest, asksBeforeThePictureIsLost) {
    EXPECT_EQ(controller->terminate(), 1);
    open();

    EXPECT_EQ(controller->terminate(), 2);
    ASSERT_NE(sheet(), nullptr);
    EXPECT_EQ(controller->terminate(), 2);
    EXPECT_EQ(window->findChildren<IIWarningMessageController *>().size(), 1);
    sheet()->cancel();
    EXPECT_EQ(answer, false);
    EXPECT_EQ(sheet(), nullptr);

    answer.reset();
    EXPECT_EQ(controller->terminate(), 2);
    sheet()->ok();
    EXPECT_FALSE(answer) << "the save panel is shown";
    panel()->reject();
    EXPECT_EQ(answer, false);
    EXPECT_TRUE(controller->needSave());

    answer.reset();
    controller->terminate();
    sheet()->ok();
    saveAs(file("quit"));
    EXPECT_EQ(answer, true);
    EXPECT_FALSE(controller->needSave());
    EXPECT_TRUE(QFileInfo::exists(file("quit.png")));
    EXPECT_EQ(controller->terminate(), 1);

    controller->effectSettingsChanged(10, 0, 0);
    waitForIdle();
    answer.reset();
    EXPECT_EQ(controller->terminate(), 2);
    sheet()->other();
    EXPECT_EQ(answer, true);
}

TEST_F(EditingTest, savingBeforeOpeningLeavesTheDocumentDirty) {
    open();
    controller->openTile();
    ASSERT_NE(sheet(), nullptr);
    sheet()->ok();
    saveAs(file("kept.png"));
    EXPECT_TRUE(QFileInfo::exists(file("kept.png")));
    EXPECT_TRUE(controller->needSave());
    EXPECT_EQ(panel(), nullptr) << "nothing is opened";

    controller->openTile();
    sheet()->cancel();
    EXPECT_EQ(panel(), nullptr);

    controller->openTile();
    sheet()->other();
    ASSERT_NE(panel(), nullptr);
    type(panel(), '"' + bracketFile(0) + "\" \"" + bracketFile(1) + '"');
    accept(panel());
    ASSERT_NE(panel(), nullptr) << "two photographs: the panel stays";
    auto *alert = panel()->findChild<QMessageBox *>();
    ASSERT_NE(alert, nullptr);
    EXPECT_EQ(alert->text(), localizedText("IDS_TOO_MANY_ERROR"));
    alert->close();
    type(panel(), '"' + bracketFile(2) + "\" \"" + bracketFile(1) + "\" \"" + bracketFile(0) + '"');
    accept(panel());
    EXPECT_TRUE(controller->isRunning());
    waitForIdle();
    EXPECT_EQ(panel(), nullptr);
}

TEST_F(EditingTest, takesDroppedPhotographsByTheRulesOfThePanel) {
    controller->offerURLs(bracketFiles().mid(1));
    ASSERT_NE(sheet(), nullptr);
    EXPECT_EQ(sheet()->warningMessage(), localizedText("IDS_TOO_MANY_ERROR"));
    sheet()->ok();
    QList<QUrl> urls = bracketFiles();
    urls[1] = QUrl::fromLocalFile(file("picture.tif"));
    controller->offerURLs(urls);
    ASSERT_NE(sheet(), nullptr);
    EXPECT_TRUE(sheet()->warningMessage().contains("picture.tif"));
    sheet()->ok();
    EXPECT_FALSE(controller->isRunning());

    controller->offerURLs(bracketFiles());
    waitForIdle();
    const qint64 first = picture().cacheKey();
    urls = bracketFiles();
    std::swap(urls[0], urls[2]);
    controller->offerURLs(urls);
    ASSERT_NE(sheet(), nullptr) << "the picture is not saved";
    EXPECT_FALSE(controller->isRunning());
    sheet()->other();
    EXPECT_TRUE(controller->isRunning());
    waitForIdle();
    EXPECT_NE(picture().cacheKey(), first);
    IIAdjustViewController &side = *controller->adjustViewController();
    EXPECT_GT(brightness(thumbnail(side.leftImageView())), brightness(thumbnail(side.rightImageView())));
}

TEST_F(EditingTest, savesEveryType) {
    open();
    for (const auto &[name, type, result] : {std::tuple{"a", "public.png", "a.png"},
                                             {"b.x", "public.tiff", "b.x.tif"},
                                             {"c.png", "public.jpeg", "c.jpg"}}) {
        controller->effectSettingsChanged(0, 0, 0); // dirty again
        waitForIdle();
        EXPECT_TRUE(controller->needSave());
        controller->saveAs();
        saveAs(file(name), type);
        EXPECT_FALSE(controller->needSave());
        const QImage image(file(result));
        ASSERT_FALSE(image.isNull()) << result;
        EXPECT_EQ(image.size(), picture().size());
        EXPECT_NEAR(image.dotsPerMeterX(), 72 / 0.0254, 1) << result;
        if (QString(type) != "public.jpeg") {
            EXPECT_EQ(largestDifference(image, picture()), 0) << result;
        }
        EXPECT_EQ(told, localizedText("IDS_SAVED_AS").arg(result));
    }
    // The quality in the panel does not reach the file.
    controller->saveAs();
    controller->saveViewController()->setSaveQuality(0.1F);
    saveAs(file("d.jpg"), "public.jpeg");
    EXPECT_EQ(testing::readFile(folder.path("c.jpg")), testing::readFile(folder.path("d.jpg")));
    controller->saveAs();
    EXPECT_EQ(controller->saveViewController()->saveQuality(), 0.9F) << "reset each time";
    panel()->reject();
}

TEST_F(EditingTest, tellsOfAFailedSaveAndKeepsThePicture) {
    open();
    controller->saveAs();
    ASSERT_NE(panel(), nullptr);
    std::filesystem::create_directory(folder.path("gone"));
    panel()->setDirectory(file("gone"));
    type(panel(), "picture");
    // The folder vanishes between choosing and writing, which happens on another thread.
    QObject::connect(panel(), &QDialog::finished, [this] { std::filesystem::remove(folder.path("gone")); });
    accept(panel());
    waitForIdle();
    ASSERT_NE(sheet(), nullptr);
    EXPECT_EQ(sheet()->warningMessage(), localizedText("IDS_SAVE_FAILED"));
    EXPECT_EQ(told, "picture.png: " + localizedText("IDS_FOLDER_GONE")) << told.toStdString();
    EXPECT_TRUE(controller->needSave());
    sheet()->ok();

    FileError reason;
    EXPECT_FALSE(IIEditingViewController::save(picture(), {}, "/dev/full", "public.png", {}, &reason));
    EXPECT_EQ(reason.path, "/dev/full");
    EXPECT_FALSE(IIEditingViewController::save({}, {}, file("no.png"), "public.png", {}));
    EXPECT_FALSE(IIEditingViewController::save(picture(), {}, file("no.gif"), "public.gif", {}));
    EXPECT_TRUE(IIEditingViewController::saveTIFF(picture(), picture(), file("two.tif"), {}));
}

TEST_F(EditingTest, neverReplacesAPhotograph) {
    open();
    const auto before = testing::readFile(bracketFile(1).toStdString());
    controller->saveAs();
    controller->saveViewController()->setSaveType("public.jpeg");
    type(panel(), bracketFile(1));
    accept(panel());
    ASSERT_NE(panel(), nullptr) << "the panel stays";
    auto *alert = panel()->findChild<QMessageBox *>();
    ASSERT_NE(alert, nullptr);
    EXPECT_EQ(alert->text(), localizedText("IDS_SAVE_OVER_PHOTOGRAPH"));
    alert->close();
    panel()->reject();
    EXPECT_EQ(testing::readFile(bracketFile(1).toStdString()), before);
    EXPECT_TRUE(controller->needSave());
}

TEST_F(EditingTest, showsWarningsWithTheGivenButtons) {
    controller->showFailedWarning("It failed");
    ASSERT_NE(sheet(), nullptr);
    EXPECT_TRUE(sheet()->isModal());
    EXPECT_EQ(sheet()->messageField()->text(), "It failed");
    EXPECT_EQ(sheet()->okButn()->text(), localizedText("IDS_OK"));
    EXPECT_TRUE(sheet()->okButn()->isVisible());
    EXPECT_FALSE(sheet()->cancelButn()->isVisible());
    EXPECT_FALSE(sheet()->otherButn()->isVisible());
    QTest::mouseClick(sheet()->okButn(), Qt::LeftButton);
    EXPECT_EQ(sheet(), nullptr);

    const auto resultOf = [this](auto &&end) {
        int result = 7;
        controller->showUnsaveWarning([&result](int returnCode) { result = returnCode; });
        EXPECT_EQ(sheet()->commentField()->text(), localizedText("IDS_SAVE_PROMPT"));
        end(sheet());
        EXPECT_EQ(sheet(), nullptr);
        return result;
    };
    EXPECT_EQ(resultOf([](auto *shown) { QTest::mouseClick(shown->okButn(), Qt::LeftButton); }), 1);
    EXPECT_EQ(resultOf([](auto *shown) { QTest::mouseClick(shown->cancelButn(), Qt::LeftButton); }), 0);
    EXPECT_EQ(resultOf([](auto *shown) { QTest::mouseClick(shown->otherButn(), Qt::LeftButton); }), -1);
    EXPECT_EQ(resultOf([](auto *shown) { QTest::keyClick(shown, Qt::Key_Escape); }), 0);
}

} // namespace
} // namespace tristop
