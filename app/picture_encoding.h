// SPDX-License-Identifier: GPL-3.0-or-later
// The encoders of picture files. All have one signature; each writes an opaque picture tagged as sRGB and
// returns what went wrong, or nothing on success.
#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "app/picture_view.h"

namespace tristop {

enum class TiffCompression { None, Lzw, PackBits, Deflate };

/// How pictures are compressed.
struct EncodingOptions {
    int32_t jpegQuality =
        94; ///< 0 to 100; full colour resolution from 90 on, half of it in each direction below
    TiffCompression tiffCompression = TiffCompression::Lzw;
    int32_t pngLevel = 1; ///< 0 none, 1 fast, up to 9 for a long search that rarely gains much on photographs

    bool operator==(const EncodingOptions &) const = default;
};

/// What is told of a picture beside its pixels.
struct PictureProperties {
    int32_t dotsPerInch = 72;
    std::vector<uint8_t> exif; ///< an EXIF block, which begins with a TIFF header; empty for none
};

std::optional<std::string> encodePng(const PictureView &picture, const PictureProperties &properties,
                                     const EncodingOptions &options, std::FILE *file);
std::optional<std::string> encodeJpeg(const PictureView &picture, const PictureProperties &properties,
                                      const EncodingOptions &options, std::FILE *file);
std::optional<std::string> encodeTiff(const PictureView &picture, const PictureProperties &properties,
                                      const EncodingOptions &options, std::FILE *file);

/// A TIFF file of several pictures, which have no EXIF data.
std::optional<std::string> encodeTiffPages(const std::vector<PictureView> &pictures, int32_t dotsPerInch,
                                           TiffCompression compression, std::FILE *file);

} // namespace tristop
