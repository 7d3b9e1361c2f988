// SPDX-License-Identifier: GPL-3.0-or-later
#include <png.h>

#include "app/encoder_failure.h"
#include "app/picture_encoding.h"
#include "app/png_compression.h"

namespace tristop {
namespace {

/// libpng's encoder over an open file. A failure leaves it by a longjmp to write, which then returns false.
class PngEncoder {
public:
    explicit PngEncoder(EncoderFailure &failure) : failure(failure) {}
    ~PngEncoder() { png_destroy_write_struct(&png, &info); }
    PngEncoder(const PngEncoder &) = delete;
    PngEncoder &operator=(const PngEncoder &) = delete;

    bool write(const PictureView &picture, const PictureProperties &properties,
               const std::vector<ByteBlock> &compressed) {
        png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &failure, fail,
                                      [](png_structp, png_const_charp) {});
        info = png != nullptr ? png_create_info_struct(png) : nullptr;
        if (info == nullptr) {
            failure.reason = kNoMemoryReason;
            return false;
        }
        if (setjmp(failure.escape) != 0)
            return false;
        png_init_io(png, failure.file);
        png_set_IHDR(png, info, static_cast<png_uint_32>(picture.width),
                     static_cast<png_uint_32>(picture.height), 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                     PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        png_set_sRGB_gAMA_and_cHRM(png, info, PNG_sRGB_INTENT_PERCEPTUAL);
        const auto dotsPerMetre = static_cast<png_uint_32>(properties.dotsPerInch / 0.0254 + 0.5);
        png_set_pHYs(png, info, dotsPerMetre, dotsPerMetre, PNG_RESOLUTION_METER);
        if (!properties.exif.empty()) // libpng copies the bytes, which it takes as writable
            png_set_eXIf_1(png, info, static_cast<png_uint_32>(properties.exif.size()),
                           const_cast<png_bytep>(properties.exif.data()));
        png_write_info(png, info);
        for (const ByteBlock &block : compressed)
            png_write_chunk(png, reinterpret_cast<png_const_bytep>("IDAT"), block.bytes.get(), block.size);
        png_write_chunk(png, reinterpret_cast<png_const_bytep>("IEND"), nullptr, 0);
        return true;
    }

private:
    [[noreturn]] static void fail(png_structp png, png_const_charp message) {
        auto *failure = static_cast<EncoderFailure *>(png_get_error_ptr(png));
        failure->note(message);
        std::longjmp(failure->escape, 1);
    }

    EncoderFailure &failure;
    png_structp png = nullptr;
    png_infop info = nullptr;
};

} // namespace

std::optional<std::string> encodePng(const PictureView &picture, const PictureProperties &properties,
                                     const EncodingOptions &options, std::FILE *file) {
    const auto compressed = compressForPng(picture, options.pngLevel);
    if (!compressed)
        return kNoMemoryReason;
    EncoderFailure failure;
    failure.file = file;
    if (PngEncoder(failure).write(picture, properties, *compressed))
        return std::nullopt;
    return failure.reason;
}

} // namespace tristop
