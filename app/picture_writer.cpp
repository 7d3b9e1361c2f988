// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/picture_writer.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <vector>

#include <jpeglib.h>
#include <png.h>

#include "app/color_profile.h"
#include "app/file_writer.h"
#include "app/png_compression.h"

namespace tristop {
namespace {

constexpr const char *kNoMemory = "there is not enough memory";

/// Where an encoder's error ends up: the libraries leave through longjmp.
struct EncoderFailure {
    std::jmp_buf escape;
    std::FILE *file = nullptr;
    std::string reason;

    /// Keeps the system's error when the file could not be written, else the library's message.
    void note(const char *message) {
        const int error = errno;
        reason = std::ferror(file) != 0 ? errnoMessage(error) : message;
    }
};

/// libpng's encoder over an open file. Each member is left by a longjmp on failure and then returns false.
class PngEncoder {
public:
    explicit PngEncoder(EncoderFailure &failure) : failure(failure) {}
    ~PngEncoder() { png_destroy_write_struct(&png, &info); }
    PngEncoder(const PngEncoder &) = delete;
    PngEncoder &operator=(const PngEncoder &) = delete;

    bool write(const BgrView &picture, const std::vector<ByteBlock> &compressed) {
        png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &failure, fail,
                                      [](png_structp, png_const_charp) {});
        info = png != nullptr ? png_create_info_struct(png) : nullptr;
        if (info == nullptr) {
            failure.reason = kNoMemory;
            return false;
        }
        if (setjmp(failure.escape) != 0)
            return false;
        png_init_io(png, failure.file);
        png_set_IHDR(png, info, static_cast<png_uint_32>(picture.width),
                     static_cast<png_uint_32>(picture.height), 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                     PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        png_set_sRGB_gAMA_and_cHRM(png, info, PNG_sRGB_INTENT_PERCEPTUAL);
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

/// libjpeg's encoder over an open file, in the same manner.
class JpegEncoder {
public:
    explicit JpegEncoder(EncoderFailure &failure) : failure(failure) {
        info.err = jpeg_std_error(&errors);
        errors.error_exit = fail;
        errors.output_message = [](j_common_ptr) {};
        info.client_data = &failure;
    }
    ~JpegEncoder() { jpeg_destroy_compress(&info); }
    JpegEncoder(const JpegEncoder &) = delete;
    JpegEncoder &operator=(const JpegEncoder &) = delete;

    bool write(const BgrView &picture, const std::vector<uint8_t> &profile) {
        if (setjmp(failure.escape) != 0)
            return false;
        jpeg_create_compress(&info);
        jpeg_stdio_dest(&info, failure.file);
        info.image_width = static_cast<JDIMENSION>(picture.width);
        info.image_height = static_cast<JDIMENSION>(picture.height);
        info.input_components = 3;
        info.in_color_space = JCS_EXT_BGR;
        jpeg_set_defaults(&info);
        constexpr int kQuality = 92;
        jpeg_set_quality(&info, kQuality, TRUE);
        info.comp_info[0].h_samp_factor = info.comp_info[0].v_samp_factor = 1; // chroma at full resolution
        info.dct_method = JDCT_ISLOW;
        jpeg_start_compress(&info, TRUE);
        jpeg_write_icc_profile(&info, profile.data(), static_cast<unsigned>(profile.size()));
        for (int32_t y = 0; y < picture.height; ++y) {
            // libjpeg takes its input rows as writable and leaves them alone.
            auto *row = const_cast<uint8_t *>(picture.pixels + static_cast<ptrdiff_t>(y) * picture.lineBytes);
            jpeg_write_scanlines(&info, &row, 1);
        }
        jpeg_finish_compress(&info);
        return true;
    }

private:
    [[noreturn]] static void fail(j_common_ptr codec) {
        auto *failure = static_cast<EncoderFailure *>(codec->client_data);
        std::array<char, JMSG_LENGTH_MAX> message{};
        codec->err->format_message(codec, message.data());
        failure->note(message.data());
        std::longjmp(failure->escape, 1);
    }

    EncoderFailure &failure;
    jpeg_compress_struct info{};
    jpeg_error_mgr errors{};
};

/// Writes a picture to an open file. Returns what went wrong, or nothing on success.
std::optional<std::string> encode(const BgrView &picture, PictureFormat format, std::FILE *file) {
    EncoderFailure failure;
    failure.file = file;
    bool encoded = false;
    if (format == PictureFormat::Jpeg)
        encoded = JpegEncoder(failure).write(picture, srgbProfile());
    else if (const auto compressed = compressForPng(picture))
        encoded = PngEncoder(failure).write(picture, *compressed);
    else
        failure.reason = kNoMemory;
    if (encoded)
        return std::nullopt;
    return failure.reason;
}

} // namespace

std::optional<PictureFormat> pictureFormat(const std::string &path) {
    std::string suffix = std::filesystem::path(path).extension().string();
    std::ranges::transform(suffix, suffix.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    if (suffix == ".png")
        return PictureFormat::Png;
    if (suffix == ".jpg" || suffix == ".jpeg")
        return PictureFormat::Jpeg;
    return std::nullopt;
}

std::optional<FileError> checkTarget(const std::string &path) {
    if (!pictureFormat(path))
        return cannotWrite(path, "its name ends in neither .png nor .jpg");
    return checkFileTarget(path);
}

std::optional<FileError> writePicture(const std::string &path, const BgrView &picture) {
    const auto format = pictureFormat(path);
    if (!format)
        return checkTarget(path);
    return replaceFile(path, [&](std::FILE *file) { return encode(picture, *format, file); });
}

} // namespace tristop
