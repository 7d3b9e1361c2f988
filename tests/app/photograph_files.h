// SPDX-License-Identifier: GPL-3.0-or-later
// Pictures and photograph files for the tests of image handling.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "tools/scene_renderer/dng.h"

namespace tristop::testing {

using Rgb = std::array<uint8_t, 3>;

/// A picture of three bytes a pixel (red, green, blue) without padding.
struct TestPicture {
    TestPicture() = default;
    TestPicture(int width, int height, Rgb fill = {0, 0, 0});

    int width = 0;
    int height = 0;
    std::vector<uint8_t> samples;

    Rgb at(int x, int y) const;
    void set(int x, int y, Rgb color);
    void fill(int x0, int y0, int x1, int y1, Rgb color);
};

/// Coloured noise, the same whenever it is made.
TestPicture noise(int width, int height);

/// The light, 0 to 1, of an sRGB sample.
double lightOf(uint8_t sample);

/// The largest difference of any channel.
int distance(Rgb a, Rgb b);

/// A folder of its own that goes with everything in it.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;

    std::string path(const std::string &name) const { return (folder / name).string(); }
    std::vector<std::string> names() const;

private:
    std::filesystem::path folder;
};

struct JpegOptions {
    enum Samples { kRgb, kGray, kAdobeCmyk };
    Samples samples = kRgb; ///< grey takes the red channel, CMYK stores red, green, blue and no black
    bool progressive = false;
    int densityUnit = 0; ///< of the JFIF header: 1 an inch, 2 a centimetre
    int xDensity = 1;
    int yDensity = 1;
    std::vector<uint8_t> profile = {}; ///< ICC
};

void writeJpeg(const std::string &path, const TestPicture &picture, const JpegOptions &options = {});

/// Writes a picture as the readings of a camera whose development gives it back; a colour's light is
/// multiplied by `exposure` first. With three samples a pixel the camera has no colour filter.
void writeDng(const std::string &path, const TestPicture &picture, const scene::DngEntries &entries = {},
              double exposure = 1, const scene::DngStorage &storage = {}, int samples = 1);

/// Adds EXIF entries, by Exiv2's names and notation ("Exif.Image.XResolution", "300/1").
void addExif(const std::string &path, const std::map<std::string, std::string> &entries);

TestPicture readPng(const std::string &path);

std::vector<uint8_t> readFile(const std::string &path);
void writeFile(const std::string &path, const std::vector<uint8_t> &bytes);

} // namespace tristop::testing
