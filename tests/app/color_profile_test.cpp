// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/color_profile.h"

#include <cmath>

#include <gtest/gtest.h>
#include <lcms2.h>

#include "app/image_source.h"
#include "tests/app/photograph_files.h"

namespace tristop {
namespace {

using namespace testing;
using Linear = std::array<double, 3>;

std::vector<uint8_t> bytesOf(cmsHPROFILE profile) {
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    std::vector<uint8_t> bytes(size);
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsCloseProfile(profile);
    return bytes;
}

/// Display P3: the primaries of digital cinema, D65 and sRGB's tone curve.
std::vector<uint8_t> displayP3() {
    const cmsCIExyY d65{0.3127, 0.3290, 1.0};
    const cmsCIExyYTRIPLE primaries{{0.680, 0.320, 1.0}, {0.265, 0.690, 1.0}, {0.150, 0.060, 1.0}};
    const double parameters[] = {2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
    cmsToneCurve *curve = cmsBuildParametricToneCurve(nullptr, 4, parameters);
    cmsToneCurve *const curves[] = {curve, curve, curve};
    auto bytes = bytesOf(cmsCreateRGBProfile(&d65, &primaries, curves));
    cmsFreeToneCurve(curve);
    return bytes;
}

std::vector<uint8_t> grayGamma18() {
    cmsToneCurve *curve = cmsBuildGamma(nullptr, 1.8);
    auto bytes = bytesOf(cmsCreateGrayProfile(cmsD50_xyY(), curve));
    cmsFreeToneCurve(curve);
    return bytes;
}

double srgbDecoded(double v) {
    return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
}

uint8_t srgbEncoded(double light) {
    const double l = std::clamp(light, 0.0, 1.0);
    return static_cast<uint8_t>(255 * (l <= 0.0031308 ? 12.92 * l : 1.055 * std::pow(l, 1 / 2.4) - 0.055) +
                                0.5);
}

/// What a colour becomes in sRGB, worked out from the published matrix between the two sets of primaries.
template <typename Decode>
Rgb throughMatrix(Rgb color, const std::array<Linear, 3> &matrix, Decode decode) {
    Rgb result{};
    for (size_t row = 0; row < 3; ++row) {
        double light = 0;
        for (size_t i = 0; i < 3; ++i)
            light += matrix[row][i] * decode(color[i] / 255.0);
        result[row] = srgbEncoded(light);
    }
    return result;
}

/// The colour in which a one-coloured photograph comes out.
Rgb colorOf(Rgb stored, const JpegOptions &options, const std::map<std::string, std::string> &exif = {}) {
    const TemporaryFolder folder;
    const std::string path = folder.path("color.jpg");
    writeJpeg(path, TestPicture(16, 16, stored), options);
    if (!exif.empty())
        addExif(path, exif);
    CBImageSource source;
    EXPECT_TRUE(source.initWithPhoto(path) && source.open()) << source.failure();
    const uint8_t *pixel = source.image()->pixels.get() + 4 * (16 * 8 + 8);
    EXPECT_EQ(pixel[3], 255);
    return {pixel[2], pixel[1], pixel[0]};
}

TEST(ColorProfileTest, bringsDisplayP3ToSrgb) {
    const std::array<Linear, 3> toSrgb = {
        {{1.2249, -0.2247, 0}, {-0.0420, 1.0419, 0}, {-0.0197, -0.0786, 1.0979}}};
    for (const Rgb color :
         {Rgb{200, 100, 60}, Rgb{60, 150, 90}, Rgb{90, 90, 160}, Rgb{250, 20, 20}, Rgb{128, 128, 128}}) {
        const Rgb expected = throughMatrix(color, toSrgb, srgbDecoded);
        EXPECT_LE(distance(colorOf(color, {.profile = displayP3()}), expected), 3);
    }
    EXPECT_GT(distance(colorOf({200, 100, 60}, {.profile = displayP3()}), {200, 100, 60}), 8);
}

TEST(ColorProfileTest, bringsAdobeRgbToSrgbWithoutAProfile) {
    const std::array<Linear, 3> toSrgb = {{{1.3984, -0.3984, 0}, {0, 1, 0}, {0, -0.0429, 1.0429}}};
    const auto decode = [](double v) { return std::pow(v, 563.0 / 256.0); };
    const std::map<std::string, std::string> exif = {{"Exif.Image.Orientation", "1"},
                                                     {"Exif.Photo.ColorSpace", "65535"},
                                                     {"Exif.Iop.InteroperabilityIndex", "R03"}};
    for (const Rgb color : {Rgb{180, 120, 60}, Rgb{110, 170, 90}, Rgb{128, 128, 128}})
        EXPECT_LE(distance(colorOf(color, {}, exif), throughMatrix(color, toSrgb, decode)), 3);
    EXPECT_LE(distance(colorOf({180, 120, 60}, {.profile = srgbProfile()}, exif), {180, 120, 60}), 2)
        << "an embedded profile counts more";
}

TEST(ColorProfileTest, readsGreyAndCmykFiles) {
    EXPECT_LE(distance(colorOf({90, 0, 0}, {.samples = JpegOptions::kGray}), {90, 90, 90}), 1);
    const uint8_t lighter = srgbEncoded(std::pow(90 / 255.0, 1.8));
    EXPECT_LE(distance(colorOf({90, 0, 0}, {.samples = JpegOptions::kGray, .profile = grayGamma18()}),
                       {lighter, lighter, lighter}),
              2);
    EXPECT_LE(distance(colorOf({200, 120, 40}, {.samples = JpegOptions::kAdobeCmyk}), {200, 120, 40}), 3);
}

TEST(ColorProfileTest, leavesPicturesAloneWhoseProfileIsSrgbOrDoesNotFit) {
    EXPECT_FALSE(SrgbTransform::fromProfile(srgbProfile(), SampleLayout::Bgrx));
    EXPECT_FALSE(SrgbTransform::fromProfile(displayP3(), SampleLayout::Gray));
    const std::vector<uint8_t> nonsense(200, 17);
    EXPECT_FALSE(SrgbTransform::fromProfile(nonsense, SampleLayout::Bgrx));
    EXPECT_LE(distance(colorOf({200, 100, 60}, {.profile = nonsense}), {200, 100, 60}), 2);
}

} // namespace
} // namespace tristop
