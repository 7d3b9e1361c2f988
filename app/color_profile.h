// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace tristop {

/**
 * What a decoder's samples mean: one byte each, or a 16-bit number in the machine's byte order. Adobe's CMYK
 * files store 255 minus the amount of ink.
 */
enum class SampleLayout { Gray, Bgrx, Cmyk, InvertedCmyk, Gray16, Rgb16 };

/**
 * Brings pixels of an embedded colour profile to sRGB, by Little CMS with perceptual intent.
 * Movable; one object may be used by one thread at a time.
 */
class SrgbTransform {
public:
    /**
     * The transform from the ICC profile `profile` to sRGB; none when the profile cannot be used for
     * such samples, or describes sRGB itself.
     */
    static std::optional<SrgbTransform> fromProfile(std::span<const uint8_t> profile, SampleLayout samples);

    /// The transform from Adobe RGB (1998), for BGRX samples.
    static std::optional<SrgbTransform> fromAdobeRgb();

    /**
     * Converts `pixels` pixels from `source` to BGRX at `target`, which may be the same place for
     * BGRX samples. Filler bytes are left alone.
     */
    void apply(const void *source, uint8_t *target, uint32_t pixels) const;

private:
    struct Deleter {
        void operator()(void *transform) const;
    };

    explicit SrgbTransform(void *transform) : transform(transform) {}
    static std::optional<SrgbTransform> between(void *profile, SampleLayout samples);
    bool keepsColors() const;

    std::unique_ptr<void, Deleter> transform; // cmsHTRANSFORM
};

/// The sRGB profile that written pictures carry, as ICC bytes: the same ones every time.
std::vector<uint8_t> srgbProfile();

} // namespace tristop
