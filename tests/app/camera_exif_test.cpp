// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/camera_exif.h"

#include <gtest/gtest.h>

#include "app/picture_writer.h"
#include "tests/app/photograph_files.h"
#include "tests/app/written_files.h"

namespace tristop {
namespace {

using namespace testing;
using Entries = std::map<std::string, std::string>;

class CameraExifTest : public ::testing::Test {
protected:
    /// What a finished picture of 20 x 10 pixels in each format tells when the photograph tells `source`.
    std::vector<Entries> finished(const Entries &source, bool withPlace = true) {
        const std::string photograph = folder.path("photograph.jpg");
        writeJpeg(photograph, TestPicture(32, 16));
        addExif(photograph, source);
        const PictureProperties properties{72,
                                           finishedExif(readCameraExif(photograph, withPlace), 20, 10, 72)};
        const std::vector<uint8_t> pixels(600, 99);
        std::vector<Entries> result;
        for (const char *name : {"result.jpg", "result.png", "result.tif"}) {
            EXPECT_FALSE(writePicture(folder.path(name), {pixels.data(), 20, 10, 60}, properties));
            result.push_back(readExif(folder.path(name)));
        }
        return result;
    }

    TemporaryFolder folder;
};

TEST_F(CameraExifTest, takesOverWhatTheCameraTells) {
    const Entries camera = {{"Exif.Image.Make", "Tristop Optics"},
                            {"Exif.Image.Copyright", "Ana"},
                            {"Exif.Photo.LensModel", "24-105 mm"},
                            {"Exif.Photo.LensSpecification", "24/1 105/1 4/1 4/1"},
                            {"Exif.Photo.DateTimeOriginal", "2024:05:01 10:20:30"},
                            {"Exif.Photo.SubSecTimeOriginal", "042"},
                            {"Exif.Photo.ExposureTime", "1/125"},
                            {"Exif.GPSInfo.GPSLatitudeRef", "N"},
                            {"Exif.GPSInfo.GPSLatitude", "48/1 12/1 613/20"}};
    const Entries stale = {{"Exif.Image.Orientation", "6"},
                           {"Exif.Image.XResolution", "300/1"},
                           {"Exif.Image.Software", "Firmware 1.2"},
                           {"Exif.Photo.PixelXDimension", "32"},
                           {"Exif.Photo.MakerNote", "1 2 3 4 5 6 7 8"},
                           {"Exif.Thumbnail.Compression", "6"},
                           {"Exif.Iop.InteroperabilityIndex", "R03"}};
    Entries source = camera;
    source.insert(stale.begin(), stale.end());
    for (const Entries &entries : finished(source)) {
        for (const auto &[name, value] : camera)
            EXPECT_TRUE(entries.contains(name) && entries.at(name) == value) << name;
        EXPECT_EQ(entries.at("Exif.Image.Orientation"), "1");
        EXPECT_EQ(entries.at("Exif.Image.XResolution"), "72/1");
        EXPECT_EQ(entries.at("Exif.Image.Software").rfind("Tristop ", 0), 0u);
        EXPECT_EQ(entries.at("Exif.Photo.PixelXDimension"), "20");
        EXPECT_EQ(entries.at("Exif.Photo.PixelYDimension"), "10");
        for (const char *name :
             {"Exif.Photo.MakerNote", "Exif.Thumbnail.Compression", "Exif.Iop.InteroperabilityIndex"})
            EXPECT_FALSE(entries.contains(name)) << name;
    }
    for (const Entries &entries : finished(source, false)) {
        EXPECT_EQ(entries.at("Exif.Image.Make"), "Tristop Optics");
        for (const auto &[name, value] : entries)
            EXPECT_EQ(name.find("GPS"), std::string::npos) << name;
    }
}

TEST_F(CameraExifTest, finishesWithoutACamera) {
    EXPECT_TRUE(readCameraExif(folder.path("nowhere.jpg"), true).empty());
    for (const Entries &entries : finished({}))
        EXPECT_EQ(entries.at("Exif.Photo.PixelXDimension"), "20");
}

TEST_F(CameraExifTest, leavesOutWhatIsTooLong) {
    const Entries source = {{"Exif.Image.Copyright", std::string(40000, 'c')},
                            {"Exif.Image.Artist", std::string(3000, 'a')},
                            {"Exif.Photo.LensModel", "24-105 mm"}};
    for (const Entries &entries : finished(source)) {
        EXPECT_FALSE(entries.contains("Exif.Image.Copyright"));
        EXPECT_EQ(entries.at("Exif.Image.Artist").size(), 3000u);
        EXPECT_EQ(entries.at("Exif.Photo.LensModel"), "24-105 mm");
    }
}

} // namespace
} // namespace tristop
