// SPDX-License-Identifier: GPL-3.0-or-later
// What the window decides without showing anything: zoom, dirty state, save options, pages and thumbnails.
#include <filesystem>
#include <future>

#include <gtest/gtest.h>

#include "app/adjustments.h"
#include "app/background_worker.h"
#include "app/document.h"
#include "app/photographs.h"
#include "app/print_layout.h"
#include "app/reduced_photograph.h"
#include "app/save_options.h"
#include "app/zoom.h"
#include "tests/app/photograph_files.h"

namespace tristop {
namespace {

using testing::TemporaryFolder;
using testing::TestPicture;

TEST(ZoomTest, stopsAtItsSteps) {
    const auto in = [](double factor) {
        ZoomState zoom{ZoomMode::Fit, factor};
        zoom.zoomIn();
        EXPECT_EQ(zoom.mode, ZoomMode::Free);
        return zoom.factor;
    };
    const auto out = [](double factor) {
        ZoomState zoom{ZoomMode::Fit, factor};
        zoom.zoomOut();
        EXPECT_EQ(zoom.mode, ZoomMode::Free);
        return zoom.factor;
    };
    EXPECT_EQ(in(0.8), 1.0);
    EXPECT_EQ(out(0.8), 0.7);
    EXPECT_EQ(in(1.0), 1.5);
    EXPECT_EQ(out(1.0), 0.7);
    EXPECT_EQ(in(50.0), 50.0);
    EXPECT_EQ(out(0.03), 0.03);
    EXPECT_EQ(in(0.01), 0.03);
    EXPECT_EQ(out(60), 50.0);
    ZoomState zoom;
    zoom.zoomTo(0.001);
    EXPECT_EQ(zoom.factor, 0.03);
    zoom.zoomTo(51);
    EXPECT_EQ(zoom.factor, 50.0);
    zoom.zoomTo(0.512);
    EXPECT_EQ(zoom.factor, 0.512);
}

TEST(ZoomTest, fitsInSinglePrecisionAndNeverEnlarges) {
    EXPECT_EQ(fitZoom(6000, 4000, 1200, 1000), 0.2);
    EXPECT_EQ(fitZoom(400, 300, 1200, 1000), 1.0);
    EXPECT_EQ(fitZoom(400, 300, 400, 300), 1.0);
    EXPECT_EQ(fitZoom(4000, 6000, 1200, 1000), static_cast<float>(4000.0 * (1000.0F / 6000.0F)) / 4000.0);
    EXPECT_EQ(fitZoom(3000, 100, 1000, 1000), 1000.0 / 3000) << "1000.000...F of 3000";
}

TEST(DocumentTest, isDirtyFromEachPictureToItsSaving) {
    Document document;
    EXPECT_FALSE(document.isDirty);
    EXPECT_FALSE(document.needSave());
    EXPECT_TRUE(document.validateUserInterfaceItem("openTile:"));
    EXPECT_TRUE(document.validateUserInterfaceItem("printSetup:"));
    for (const char *action : {"saveAs:", "print:", "zoomFit:", "zoomIn:", "zoomActual:", "zoomOut:"})
        EXPECT_FALSE(document.validateUserInterfaceItem(action)) << action;
    document.pictureShown();
    EXPECT_TRUE(document.needSave());
    EXPECT_TRUE(document.validateUserInterfaceItem("saveAs:"));
    document.pictureSaved("/a.png");
    EXPECT_FALSE(document.needSave());
    EXPECT_EQ(document.savedPath, "/a.png");
    document.pictureShown();
    EXPECT_TRUE(document.needSave());
    EXPECT_EQ(document.savedPath, "");
}

TEST(DocumentTest, knowsItsPhotographsByAnyName) {
    const TemporaryFolder folder;
    for (const char *name : {"a", "b", "c", "d", "e", "f"})
        testing::writeFile(folder.path(name), {1});
    std::filesystem::create_symlink(folder.path("a"), folder.path("link"));
    Document document;
    document.photographsRead({folder.path("a"), folder.path("b"), folder.path("c")});
    document.forgetFormerPhotographs();
    EXPECT_TRUE(document.isPhotograph(folder.path("link")));
    EXPECT_TRUE(document.isPhotograph(folder.path("./c")));
    EXPECT_FALSE(document.isPhotograph(folder.path("d")));
    EXPECT_FALSE(document.isPhotograph(folder.path("none")));
    document.photographsRead({folder.path("d"), folder.path("e"), folder.path("f")});
    EXPECT_TRUE(document.isPhotograph(folder.path("a"))) << "the picture of them is still shown";
    EXPECT_TRUE(document.isPhotograph(folder.path("e")));
    document.forgetFormerPhotographs();
    EXPECT_FALSE(document.isPhotograph(folder.path("a")));
    EXPECT_TRUE(document.isPhotograph(folder.path("e")));
}

TEST(SaveOptionsTest, tellsTabAndCompression) {
    SaveOptions options;
    EXPECT_EQ(options.saveUTI, "public.png");
    EXPECT_EQ(options.jpegQuality, 0.9F);
    EXPECT_EQ(options.saveTab(), 0);
    options.saveUTI = "public.jpeg";
    EXPECT_EQ(options.saveTab(), 1);
    options.saveUTI = "public.tiff";
    EXPECT_EQ(options.saveTab(), 2);
    for (const auto &[stored, read] : {std::pair{1, 1}, {5, 5}, {32773, 32773}, {7, 1}, {0, 1}}) {
        options.tiffCompression = stored;
        EXPECT_EQ(options.saveCompression(), read);
    }
}

TEST(SaveOptionsTest, namesFilesAfterTheirType) {
    const auto types = SaveOptions::saveTypes();
    ASSERT_EQ(types.size(), 3u);
    EXPECT_EQ(nameForType("view", types[0]), "view.png");
    EXPECT_EQ(nameForType("view.PNG", types[0]), "view.PNG");
    EXPECT_EQ(nameForType("view.jpeg", types[1]), "view.jpeg");
    EXPECT_EQ(nameForType("view.png", types[1]), "view.jpg");
    EXPECT_EQ(nameForType("view.", types[2]), "view.tif");
    EXPECT_EQ(nameForType("view 2.5", types[2]), "view 2.5.tif");
    EXPECT_EQ(nameForType("/a.png/view", types[1]), "/a.png/view.jpg");
    EXPECT_EQ(nameForType(".png", types[0]), ".png.png");
    EXPECT_EQ(nameForType("", types[0]), "");
    EXPECT_EQ(nameForType("/folder/", types[0]), "/folder/");
}

TEST(PrintLayoutTest, takesTheWiderMarginOnBothSides) {
    // A4 whose imageable area leaves 18 points at the left and at the right, 10 at the top and 40 below.
    const PrintMargins margins = printMargins({595, 842}, {18, 10, 559, 792});
    EXPECT_EQ(margins.horizontal, 18);
    EXPECT_EQ(margins.vertical, 40);
    EXPECT_EQ(printMargins({100, 100}, {-5, 0, 110, 100}).horizontal, 0);
    EXPECT_EQ(printMargins({100, 100}, {0.1, 0, 99, 100}).horizontal, 0.9F);
}

TEST(PrintLayoutTest, fitsThePictureIntoTheMiddleOfTheFrame) {
    EXPECT_EQ(pictureRect({0, 0, 512, 601}, {2048, 1024}), (PageRect{0, 172.5, 512, 256}));
    // 0.5 to 100.5 becomes 0 to 101.
    const PageRect tall = pictureRect({0.5, 0, 100, 50}, {100, 200});
    EXPECT_EQ(tall, (PageRect{38, 0, 25, 50}));
}

TEST(PhotographsTest, tellWhatIsWrong) {
    const TemporaryFolder folder;
    const std::array<std::string, 3> paths = {folder.path("a.jpg"), folder.path("b.jpg"),
                                              folder.path("c.jpg")};
    const auto problem = [&](int width, int height, const std::string &orientation) {
        for (const std::string &path : paths)
            writeJpeg(path, TestPicture(140, 100));
        writeJpeg(paths[2], TestPicture(width, height));
        testing::addExif(paths[2], {{"Exif.Image.Orientation", orientation}});
        Photographs photographs;
        const auto error = openPhotographs(paths, photographs);
        EXPECT_EQ(error ? error->path : paths[2], paths[2]);
        return error ? std::optional(error->kind) : std::nullopt;
    };
    using Kind = PhotographError::Kind;
    EXPECT_EQ(problem(140, 100, "1"), std::nullopt);
    EXPECT_EQ(problem(140, 99, "1"), Kind::TooSmall);
    EXPECT_EQ(problem(140, 100, "6"), Kind::OtherSize);
    Photographs photographs;
    std::filesystem::remove(paths[0]);
    EXPECT_EQ(openPhotographs(paths, photographs)->kind, Kind::Unreadable);
}

TEST(ReducedPhotographTest, isSmallAndUpright) {
    const TemporaryFolder folder;
    TestPicture stored(400, 200);
    stored.fill(0, 0, 400, 100, {200, 0, 0}); // red above blue
    stored.fill(0, 100, 400, 200, {0, 0, 200});
    const std::string path = folder.path("a.jpg");
    writeJpeg(path, stored);
    const auto reduced = [&path](const char *orientation, int32_t longestSide) {
        testing::addExif(path, {{"Exif.Image.Orientation", orientation}});
        CBImageSource photograph;
        EXPECT_TRUE(photograph.initWithPhoto(path) && photograph.open());
        return reducedUpright(photograph, longestSide);
    };
    const auto isRed = [](BgrxImage &image, int32_t x, int32_t y) {
        const uint8_t *pixel = image.row(y) + 4 * x;
        return pixel[2] > 150 && pixel[0] < 50;
    };
    BgrxImage upright = reduced("1", 80);
    EXPECT_EQ(upright.width, 80);
    EXPECT_EQ(upright.height, 40);
    EXPECT_TRUE(isRed(upright, 40, 5));
    EXPECT_FALSE(isRed(upright, 40, 35));
    BgrxImage turned = reduced("6", 80); // shown turned clockwise: what was above is at the right
    EXPECT_EQ(turned.width, 40);
    EXPECT_EQ(turned.height, 80);
    EXPECT_TRUE(isRed(turned, 35, 40));
    EXPECT_FALSE(isRed(turned, 5, 40));
    BgrxImage mirrored = reduced("4", 1000);
    EXPECT_EQ(mirrored.width, 400);
    EXPECT_TRUE(isRed(mirrored, 200, 190));
    EXPECT_EQ(reducedUpright(CBImageSource(), 80).pixels, nullptr);
}

TEST(BackgroundWorkerTest, worksInOrderAndFinishesTheTaskUnderway) {
    std::string done;
    std::promise<void> begun, mayEnd;
    std::future<void> release;
    {
        BackgroundWorker worker;
        worker.start([&done] { done += 'a'; });
        worker.start([&] {
            begun.set_value();
            mayEnd.get_future().wait();
            done += 'b';
        });
        begun.get_future().wait();
        EXPECT_EQ(done, "a");
        release = std::async(std::launch::async, [&mayEnd] {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            mayEnd.set_value();
        });
    }
    EXPECT_EQ(done, "ab");
}

} // namespace
} // namespace tristop
