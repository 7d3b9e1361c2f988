// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/color_profile.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>

#include <lcms2.h>

namespace tristop {
namespace {

struct ProfileDeleter {
    void operator()(void *profile) const { cmsCloseProfile(profile); }
};
using Profile = std::unique_ptr<void, ProfileDeleter>; // cmsHPROFILE

struct LcmsSamples {
    cmsUInt32Number format;
    cmsColorSpaceSignature colorSpace;
};

LcmsSamples lcmsSamples(SampleLayout samples) {
    switch (samples) {
    case SampleLayout::Gray:
        return {TYPE_GRAY_8, cmsSigGrayData};
    case SampleLayout::Cmyk:
        return {TYPE_CMYK_8, cmsSigCmykData};
    case SampleLayout::InvertedCmyk:
        return {TYPE_CMYK_8_REV, cmsSigCmykData};
    case SampleLayout::Gray16:
        return {TYPE_GRAY_16, cmsSigGrayData};
    case SampleLayout::Rgb16:
        return {TYPE_RGB_16, cmsSigRgbData};
    case SampleLayout::Bgrx:
        break;
    }
    return {TYPE_BGRA_8, cmsSigRgbData};
}

} // namespace

void SrgbTransform::Deleter::operator()(void *transform) const {
    cmsDeleteTransform(transform);
}

std::optional<SrgbTransform> SrgbTransform::between(void *profile, SampleLayout samples) {
    const LcmsSamples input = lcmsSamples(samples);
    if (profile == nullptr || cmsGetColorSpace(profile) != input.colorSpace)
        return std::nullopt;
    const Profile srgb(cmsCreate_sRGBProfile());
    if (!srgb)
        return std::nullopt;
    void *transform =
        cmsCreateTransform(profile, input.format, srgb.get(), TYPE_BGRA_8, INTENT_PERCEPTUAL, 0);
    if (transform == nullptr)
        return std::nullopt;
    SrgbTransform result(transform);
    if (samples == SampleLayout::Bgrx && result.keepsColors())
        return std::nullopt;
    return result;
}

/// Whether an evenly spaced sample of all colours comes out as it went in, to one step of 255.
bool SrgbTransform::keepsColors() const {
    constexpr uint32_t kLevels = 18, kStep = 15;
    std::vector<uint8_t> colors;
    for (uint32_t b = 0; b < kLevels; ++b)
        for (uint32_t g = 0; g < kLevels; ++g)
            for (uint32_t r = 0; r < kLevels; ++r)
                for (const uint32_t level : {b, g, r, uint32_t{0}})
                    colors.push_back(static_cast<uint8_t>(level * kStep));
    std::vector<uint8_t> converted(colors.size());
    apply(colors.data(), converted.data(), static_cast<uint32_t>(colors.size() / 4));
    return std::equal(colors.begin(), colors.end(), converted.begin(),
                      [](int before, int after) { return std::abs(before - after) <= 1; });
}

std::optional<SrgbTransform> SrgbTransform::fromProfile(std::span<const uint8_t> profile,
                                                        SampleLayout samples) {
    if (profile.empty() || profile.size() > std::numeric_limits<cmsUInt32Number>::max())
        return std::nullopt;
    const Profile source(cmsOpenProfileFromMem(profile.data(), static_cast<cmsUInt32Number>(profile.size())));
    return between(source.get(), samples);
}

std::optional<SrgbTransform> SrgbTransform::fromAdobeRgb() {
    const cmsCIExyY d65{0.3127, 0.3290, 1.0};
    const cmsCIExyYTRIPLE primaries{{0.64, 0.33, 1.0}, {0.21, 0.71, 1.0}, {0.15, 0.06, 1.0}};
    constexpr double kAdobeRgbGamma = 563.0 / 256.0;
    cmsToneCurve *gamma = cmsBuildGamma(nullptr, kAdobeRgbGamma);
    if (gamma == nullptr)
        return std::nullopt;
    cmsToneCurve *const curves[3] = {gamma, gamma, gamma};
    const Profile adobeRgb(cmsCreateRGBProfile(&d65, &primaries, curves));
    cmsFreeToneCurve(gamma);
    return between(adobeRgb.get(), SampleLayout::Bgrx);
}

void SrgbTransform::apply(const void *source, uint8_t *target, uint32_t pixels) const {
    cmsDoTransform(transform.get(), source, target, pixels);
}

std::vector<uint8_t> srgbProfile() {
    const Profile profile(cmsCreate_sRGBProfile());
    cmsUInt32Number size = 0;
    if (!profile || !cmsSaveProfileToMem(profile.get(), nullptr, &size))
        return {};
    std::vector<uint8_t> bytes(size);
    if (!cmsSaveProfileToMem(profile.get(), bytes.data(), &size))
        return {};
    // The header's creation date (six big-endian 16-bit numbers) would make every written file differ.
    constexpr std::array<uint8_t, 12> kDate = {0x07, 0xd0, 0, 1, 0, 1, 0, 0, 0, 0, 0, 0};
    constexpr size_t kDateOffset = 24;
    std::copy(kDate.begin(), kDate.end(), bytes.begin() + kDateOffset);
    return bytes;
}

} // namespace tristop
