// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/batch/batch_plan.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <filesystem>
#include <future>
#include <thread>

#include <gtest/gtest.h>

#include "app/camera_exif.h"
#include "cli/batch/memory_budget.h"
#include "cli/write_options.h"
#include "tests/app/photograph_files.h"

namespace tristop::testing {
namespace {

TEST(PhotographSearch, readsCaptureDataOfAllFoldersButTheResults) {
    const TemporaryFolder folder;
    for (const char *name : {"card", "card/b", "card/out", "card/.trash"})
        std::filesystem::create_directory(folder.path(name));
    const TestPicture picture(120, 100);
    for (const char *name : {"card/IMG_10.JPG", "card/IMG_9.jpeg", "card/b/x.jpg", "card/out/r.jpg",
                             "card/.trash/t.jpg", "card/._IMG_9.jpg"})
        writeJpeg(folder.path(name), picture);
    writeFile(folder.path("card/notes.txt"), {'x'});
    writeFile(folder.path("card/torn.jpg"), {0xff, 0xd8, 0xff});
    const std::string tagged = folder.path("card/IMG_9.jpeg");
    addExif(tagged, {{"Exif.Image.Make", "Maker"},
                     {"Exif.Image.Model", "One"},
                     {"Exif.Image.Orientation", "6"},
                     {"Exif.Photo.BodySerialNumber", "77"},
                     {"Exif.Photo.DateTimeOriginal", "2024:05:31 18:30:05"},
                     {"Exif.Photo.SubSecTimeOriginal", "25"},
                     {"Exif.Photo.ExposureTime", "1/60"},
                     {"Exif.Photo.FNumber", "28/10"},
                     {"Exif.Photo.ISOSpeedRatings", "400"},
                     {"Exif.Photo.ExposureBiasValue", "-5/3"}});
    PhotographSearch found;
    ASSERT_FALSE(findPhotographs({folder.path("card/"), tagged}, folder.path("card/out"), found));
    std::vector<std::string> names;
    for (const Photograph &photograph : found.photographs)
        names.push_back(photograph.folder + ":" + std::filesystem::path(photograph.path).filename().string());
    EXPECT_EQ(names, (std::vector<std::string>{":IMG_9.jpeg", ":IMG_10.JPG", ":torn.jpg", "b:x.jpg"}));
    EXPECT_EQ(found.photographs[2].failure, "is no photograph that can be read");

    const Capture &capture = found.photographs[0].capture;
    EXPECT_EQ(capture.width, 100);
    EXPECT_EQ(capture.height, 120);
    EXPECT_EQ(capture.camera, "Maker One 77");
    using namespace std::chrono;
    EXPECT_EQ(capture.time, CameraTime(sys_days(2024y / 5 / 31) + 18h + 30min + 5s + 250ms));
    EXPECT_EQ(capture.exposureTime, microseconds(16666));
    EXPECT_NEAR(*capture.exposure, std::log2(1 / 60.0 * 4 / (2.8 * 2.8)), 1e-6);
    EXPECT_NEAR(*capture.exposureBias, -5 / 3.0, 1e-6);
    const Capture &plain = found.photographs[1].capture;
    EXPECT_FALSE(plain.time || plain.exposure || plain.exposureBias);
    ASSERT_FALSE(writeMergedPicture(folder.path("merged.jpg"), {picture.samples.data(), 120, 100, 360}, 120,
                                    readCameraExif(tagged, true), {}));
    Capture merged;
    EXPECT_EQ(readCapture(folder.path("merged.jpg"), merged), "is a merged picture");

    addExif(tagged, {{"Exif.Photo.DateTimeOriginal", "0000:00:00 00:00:00"},
                     {"Exif.Photo.ExposureTime", "1/0"},
                     {"Exif.Photo.FNumber", "0/1"},
                     {"Exif.Photo.ShutterSpeedValue", "3/1"}});
    Capture absurd;
    ASSERT_FALSE(readCapture(tagged, absurd));
    EXPECT_FALSE(absurd.time);
    EXPECT_NEAR(*absurd.exposure, -3 + 2, 1e-9) << "an eighth of a second at ISO 400";

    EXPECT_EQ(findPhotographs({folder.path("none")}, "", found)->reason, "does not exist");
    EXPECT_EQ(findPhotographs({folder.path("card/notes.txt")}, "", found)->reason, "is no photograph");
}

TEST(Capture, tellsTheSizeThatTheRawDecoderGives) {
    const TemporaryFolder folder;
    const std::string path = folder.path("cropped.dng");
    const scene::DngStorage cropped = {.activeArea = {{10, 20, 130, 180}}};
    writeDng(path, TestPicture(200, 150), {.orientation = 6}, 1, cropped);
    Capture capture;
    ASSERT_FALSE(readCapture(path, capture));
    EXPECT_EQ(capture.width, 120);
    EXPECT_EQ(capture.height, 160);

    std::vector<uint8_t> bytes = readFile(path);
    bytes[2] = 0x55; // the magic number of RW2, whose entries Exiv2 files under the maker's own name
    writeFile(path, bytes);
    ASSERT_FALSE(readCapture(path, capture));
    EXPECT_EQ(capture.width, 120);
    EXPECT_EQ(capture.height, 160);

    writeFile(path, scene::encodeDng({60000, 60000, {}}));
    EXPECT_EQ(readCapture(path, capture), "is too large: 60000 x 60000 pixels, more than 536 megapixels");
}

/// Two brackets in one folder, one of the same names in another, and a photograph left over.
BatchPlan samplePlan(const std::string &base, const std::string &nameTemplate) {
    PhotographSearch found;
    BracketSearch brackets;
    for (const char *folder : {"", "", "b"}) {
        const size_t first = found.photographs.size();
        for (size_t i = 0; i < 3; ++i) {
            Photograph photograph;
            photograph.folder = folder;
            photograph.path =
                base + "/card/" + (*folder ? "b/" : "") + std::to_string(first % 6 + i) + ".jpg";
            photograph.capture.width = 600;
            photograph.capture.height = 400;
            photograph.modified = CameraTime(std::chrono::sys_days(std::chrono::year(2024) / 1 / 2));
            found.photographs.push_back(photograph);
        }
        brackets.brackets.push_back({{first + 1, first, first + 2}, first});
    }
    brackets.unused.push_back({0, "is odd"});
    MergeSettings settings;
    settings.toneLength = 7;
    settings.style = 2;
    settings.writing = {
        {.jpegQuality = 5, .tiffCompression = TiffCompression::PackBits, .pngLevel = 9}, false, false, true};
    return makePlan(found, brackets, settings, base + "/out", nameTemplate);
}

TEST(BatchPlan, namesResults) {
    const auto names = [](const std::string &nameTemplate) {
        std::vector<std::string> result;
        for (const PlannedMerge &merge : samplePlan("/base", nameTemplate).merges)
            result.push_back(merge.output.substr(std::string("/base/out/").size()));
        return result;
    };
    using Names = std::vector<std::string>;
    EXPECT_EQ(names("{middle}-hdr.jpg"), (Names{"0-hdr.jpg", "3-hdr.jpg", "b/0-hdr.jpg"}));
    EXPECT_EQ(names("{date}.png"), (Names{"2024-01-02.png", "2024-01-02-2.png", "b/2024-01-02.png"}));
    EXPECT_EQ(names("{n}_{first}.PNG"), (Names{"1_0.PNG", "2_3.PNG", "b/3_0.PNG"}));
    EXPECT_FALSE(templateMistake("{first}{middle}{date}{n}.jpeg"));
    EXPECT_FALSE(templateMistake("{n}.tif"));
    for (const char *wrong : {"{last}.jpg", "{first.jpg", "a/{n}.jpg", "{n}.gif", "{n}"})
        EXPECT_TRUE(templateMistake(wrong)) << wrong;
}

TEST(BatchPlan, isTheSameWhenReadAgainAlsoElsewhere) {
    const TemporaryFolder folder;
    const std::string here = folder.path("here"), there = folder.path("there");
    std::filesystem::create_directory(here);
    const BatchPlan plan = samplePlan(here, "{middle}.png");
    ASSERT_FALSE(writePlan(plan, here + "/plan.json"));
    BatchPlan again;
    ASSERT_FALSE(readPlan(here + "/plan.json", again));
    EXPECT_EQ(again.merges, plan.merges);
    EXPECT_EQ(again.settings, plan.settings);
    EXPECT_EQ(again.unused[0].path, plan.unused[0].path);
    std::filesystem::rename(here, there);
    ASSERT_FALSE(readPlan(there + "/plan.json", again));
    EXPECT_EQ(again.merges, samplePlan(there, "{middle}.png").merges);
    ASSERT_FALSE(writePlan(plan, there + "/plan.json"));
    ASSERT_FALSE(readPlan(there + "/plan.json", again));
    EXPECT_EQ(again.merges, plan.merges) << "what lies elsewhere is named absolutely";
}

TEST(BatchPlan, refusesWhatIsNoPlan) {
    const TemporaryFolder folder;
    const std::string path = folder.path("plan.json");
    BatchPlan plan;
    EXPECT_TRUE(readPlan(path, plan));
    const auto refused = [&](const std::string &text) {
        writeFile(path, {text.begin(), text.end()});
        const auto problem = readPlan(path, plan);
        return problem ? problem->reason : "";
    };
    EXPECT_EQ(refused(R"({"tristopPlan": 2})"), "is a plan of version 2; this program reads version 1");
    EXPECT_EQ(refused(R"({"tristopPlan": 1, "settings": {"ghost": 11}})"),
              "is not a sound plan: ghost must be a whole number from 0 to 10");
    const auto writing = [&refused](const std::string &options) {
        return refused(R"({"tristopPlan": 1, "settings": {"writing": )" + options + "}}");
    };
    EXPECT_EQ(writing(R"({"jpegQuality": -1})"),
              "is not a sound plan: jpegQuality must be a whole number from 0 to 100");
    EXPECT_EQ(writing(R"({"tiffCompression": "zip"})"),
              "is not a sound plan: tiffCompression must be none, lzw, packbits or deflate");
    EXPECT_EQ(writing(R"({"gps": 0})"), "is not a sound plan: gps must be true or false");
    EXPECT_EQ(writing("7"), "is not a sound plan: writing must be an object");
    EXPECT_EQ(refused(R"({"tristopPlan": 1, "settings": {}, "unused": [], "merges": [
        {"photographs": ["a", "b"], "output": "c.png", "width": 1, "height": 1}]})"),
              "is not a sound plan: a merge takes three photographs");
    for (const char *text : {"", "[]", "{", R"({"tristopPlan": "x"})", R"({"tristopPlan": 1})",
                             R"({"tristopPlan": 1, "settings": {}, "unused": [], "merges": [7]})"})
        EXPECT_NE(refused(text), "") << text;
    EXPECT_TRUE(plan.merges.empty());
}

TEST(BatchPlan, fallsIntoPartsThatAreTheWhole) {
    const BatchPlan plan = samplePlan("/base", "{n}.png");
    std::vector<PlannedMerge> all;
    for (int32_t part = 0; part < 5; ++part)
        for (const PlannedMerge &merge : partOfPlan(plan, part, 5).merges)
            all.push_back(merge);
    EXPECT_EQ(all, plan.merges);
    EXPECT_EQ(partOfPlan(plan, 0, 2).merges, (std::vector{plan.merges[0], plan.merges[2]}));
}

TEST(MemoryBudget, holdsBackWhatDoesNotFit) {
    MemoryBudget budget(100);
    std::atomic<int64_t> taken = 0;
    std::vector<std::future<void>> merges;
    for (const int64_t bytes : {60, 30, 60, 250, 40, 40, 40, 90})
        merges.push_back(std::async(std::launch::async, [&, bytes] {
            budget.take(bytes);
            const int64_t now = taken += bytes;
            EXPECT_LE(now, std::max<int64_t>(100, bytes)) << "what is too large runs alone";
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            taken -= bytes;
            budget.give(bytes);
        }));
    for (auto &merge : merges)
        merge.get();
}

} // namespace
} // namespace tristop::testing
