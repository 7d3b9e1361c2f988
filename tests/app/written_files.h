// SPDX-License-Identifier: GPL-3.0-or-later
// Picture files as other programs see them.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "tests/app/photograph_files.h"

namespace tristop::testing {

struct TestTiff {
    std::vector<TestPicture> pages;
    // of the last page:
    int compression = 0;
    int samplesPerPixel = 0;
    int orientation = 0;
    double dotsPerInch = 0; ///< 0 when the two differ or the unit is no inch
    std::vector<uint8_t> profile;
};

TestTiff readTiff(const std::string &path);

struct TestJpegHeader {
    int sampling = 0;    ///< luminance samples a chroma sample, in each direction; 0 when these differ
    int dotsPerInch = 0; ///< 0 when the two differ or the unit is no inch
};

TestJpegHeader readJpegHeader(const std::string &path);

/// EXIF entries by Exiv2's names and notation.
std::map<std::string, std::string> readExif(const std::string &path);

} // namespace tristop::testing
