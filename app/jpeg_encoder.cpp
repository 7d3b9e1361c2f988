// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <array>
#include <string_view>

#include <jpeglib.h>

#include "app/color_profile.h"
#include "app/encoder_failure.h"
#include "app/picture_encoding.h"

namespace tristop {
namespace {

/// The payload of the marker that carries EXIF data; empty for none.
std::vector<uint8_t> exifMarker(const std::vector<uint8_t> &exif) {
    using namespace std::string_view_literals;
    constexpr auto kName = "Exif\0\0"sv;
    std::vector<uint8_t> marker;
    if (!exif.empty())
        marker.assign(kName.begin(), kName.end());
    marker.insert(marker.end(), exif.begin(), exif.end());
    return marker;
}

J_COLOR_SPACE colorSpace(PixelOrder order) {
    switch (order) {
    case PixelOrder::Bgr:
        return JCS_EXT_BGR;
    case PixelOrder::Rgb:
        return JCS_EXT_RGB;
    case PixelOrder::Rgbx:
        break;
    }
    return JCS_EXT_RGBX;
}

/// libjpeg's encoder over an open file. A failure leaves it by a longjmp to write, which then returns false.
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

    bool write(const PictureView &picture, int quality, int dotsPerInch, const std::vector<uint8_t> &exif,
               const std::vector<uint8_t> &profile) {
        if (setjmp(failure.escape) != 0)
            return false;
        jpeg_create_compress(&info);
        jpeg_stdio_dest(&info, failure.file);
        info.image_width = static_cast<JDIMENSION>(picture.width);
        info.image_height = static_cast<JDIMENSION>(picture.height);
        info.input_components = picture.order == PixelOrder::Rgbx ? 4 : 3;
        info.in_color_space = colorSpace(picture.order);
        jpeg_set_defaults(&info);
        jpeg_set_quality(&info, quality, TRUE);
        constexpr int kFullColourFrom = 90;
        info.comp_info[0].h_samp_factor = info.comp_info[0].v_samp_factor =
            quality >= kFullColourFrom ? 1 : 2;
        info.dct_method = JDCT_ISLOW;
        constexpr UINT8 kPerInch = 1;
        info.density_unit = kPerInch;
        info.X_density = info.Y_density = static_cast<UINT16>(dotsPerInch);
        jpeg_start_compress(&info, TRUE);
        if (!exif.empty())
            jpeg_write_marker(&info, JPEG_APP0 + 1, exif.data(), static_cast<unsigned>(exif.size()));
        jpeg_write_icc_profile(&info, profile.data(), static_cast<unsigned>(profile.size()));
        for (int32_t y = 0; y < picture.height; ++y) {
            auto *row = const_cast<uint8_t *>(picture.row(y)); // libjpeg leaves its input alone
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

} // namespace

std::optional<std::string> encodeJpeg(const PictureView &picture, const PictureProperties &properties,
                                      const EncodingOptions &options, std::FILE *file) {
    EncoderFailure failure;
    failure.file = file;
    const std::vector<uint8_t> exif = exifMarker(properties.exif), profile = srgbProfile();
    if (JpegEncoder(failure).write(picture, options.jpegQuality, properties.dotsPerInch, exif, profile))
        return std::nullopt;
    return failure.reason;
}

} // namespace tristop
