// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/jpeg_reader.h"

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <memory>
#include <span>
#include <vector>

#include <jpeglib.h>

#include <jerror.h>

#include "app/color_profile.h"
#include "app/file_error.h"

namespace tristop {
namespace {

struct FileCloser {
    void operator()(std::FILE *file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

/// Warnings of the decoder after which pixels are made up rather than read.
bool losesPixels(int warning) {
    return warning == JWRN_JPEG_EOF || warning == JWRN_HIT_MARKER || warning == JWRN_HUFF_BAD_CODE ||
           warning == JWRN_ARITH_BAD_CODE || warning == JWRN_MUST_RESYNC;
}

std::string reasonInWords(j_common_ptr codec) {
    switch (codec->err->msg_code) {
    case JERR_INPUT_EOF:
    case JWRN_JPEG_EOF:
    case JWRN_HIT_MARKER:
        return kTruncated;
    case JWRN_HUFF_BAD_CODE:
    case JWRN_ARITH_BAD_CODE:
    case JWRN_MUST_RESYNC:
    case JERR_BAD_PROGRESSION:
        return kDamaged;
    case JERR_OUT_OF_MEMORY:
        return kOutOfMemory;
    default:
        break;
    }
    std::array<char, JMSG_LENGTH_MAX> message{};
    codec->err->format_message(codec, message.data());
    return std::string("cannot be decoded: ") + message.data();
}

/**
 * libjpeg's decoder over a file's content. Its errors come back through longjmp, so each call into the
 * library stands in a function of its own that returns false when one occurred.
 */
class Decoder {
public:
    explicit Decoder(std::span<const uint8_t> file)
        : file(fmemopen(const_cast<uint8_t *>(file.data()), file.size(), "rb")) { // only reads it
        info.err = jpeg_std_error(&errors);
        errors.msg_code = JERR_OUT_OF_MEMORY; // should not even the stream have been made
        errors.error_exit = [](j_common_ptr codec) { fail(codec); };
        errors.emit_message = [](j_common_ptr codec, int level) {
            if (level < 0 && losesPixels(codec->err->msg_code))
                fail(codec);
        };
        errors.output_message = [](j_common_ptr) {};
        info.client_data = this;
        // The library goes through the whole picture once a scan, however little that brings.
        progress.progress_monitor = [](j_common_ptr codec) {
            constexpr int kMostScans = 100; // ten are usual
            if (reinterpret_cast<j_decompress_ptr>(codec)->input_scan_number > kMostScans) {
                codec->err->msg_code = JERR_BAD_PROGRESSION;
                fail(codec);
            }
        };
    }
    ~Decoder() { jpeg_destroy_decompress(&info); }
    Decoder(const Decoder &) = delete;
    Decoder &operator=(const Decoder &) = delete;

    bool readHeader() {
        if (!file)
            return false;
        if (setjmp(escape) != 0)
            return false;
        jpeg_create_decompress(&info);
        info.progress = &progress;
        // In small pieces: with all of the file in one buffer the library skips most checks of Huffman codes.
        jpeg_stdio_src(&info, file.get());
        jpeg_save_markers(&info, JPEG_APP0 + 2, 0xffff); // the colour profile
        jpeg_read_header(&info, TRUE);
        return true;
    }

    bool start(J_COLOR_SPACE samples) {
        if (setjmp(escape) != 0)
            return false;
        info.out_color_space = samples;
        info.dct_method = JDCT_ISLOW;
        info.do_fancy_upsampling = TRUE;
        jpeg_start_decompress(&info);
        return true;
    }

    bool readRow(uint8_t *row) {
        if (setjmp(escape) != 0)
            return false;
        jpeg_read_scanlines(&info, &row, 1);
        return true;
    }

    /// Reads to the end of the file's picture, so that whatever is missing there is noticed too.
    bool finish() {
        if (setjmp(escape) != 0)
            return false;
        jpeg_finish_decompress(&info);
        return true;
    }

    std::vector<uint8_t> colorProfile() {
        uint8_t *bytes = nullptr;
        unsigned length = 0;
        if (!readColorProfile(bytes, length))
            return {};
        const PixelBuffer owner(bytes);
        return {bytes, bytes + length};
    }

    std::string reason() { return reasonInWords(reinterpret_cast<j_common_ptr>(&info)); }

    jpeg_decompress_struct info{};

private:
    [[noreturn]] static void fail(j_common_ptr codec) {
        std::longjmp(static_cast<Decoder *>(codec->client_data)->escape, 1);
    }

    bool readColorProfile(uint8_t *&bytes, unsigned &length) {
        if (setjmp(escape) != 0)
            return false;
        return jpeg_read_icc_profile(&info, &bytes, &length) != FALSE;
    }

    File file;
    jpeg_error_mgr errors{};
    jpeg_progress_mgr progress{};
    std::jmp_buf escape{};
};

SampleLayout sampleLayout(const jpeg_decompress_struct &info) {
    switch (info.jpeg_color_space) {
    case JCS_GRAYSCALE:
        return SampleLayout::Gray;
    case JCS_CMYK:
    case JCS_YCCK:
        return info.saw_Adobe_marker ? SampleLayout::InvertedCmyk : SampleLayout::Cmyk;
    default:
        return SampleLayout::Bgrx;
    }
}

/// The decoder's output for files whose pixels go through `transform`, or straight into the picture.
J_COLOR_SPACE decodedSamples(SampleLayout layout, bool transformed) {
    if (layout == SampleLayout::Cmyk || layout == SampleLayout::InvertedCmyk)
        return JCS_CMYK;
    if (layout == SampleLayout::Gray && transformed)
        return JCS_GRAYSCALE;
    return JCS_EXT_BGRA; // BGRX with a filler of 255
}

/// CMYK without a profile: every ink takes away its own share of the light, black of all three.
void plainCmykToBgrx(const uint8_t *source, uint8_t *target, int32_t width, bool inverted) {
    for (int32_t x = 0; x < width; ++x, source += 4, target += 4) {
        std::array<int, 4> light; // what cyan, magenta, yellow and black let through
        std::transform(source, source + 4, light.begin(),
                       [inverted](int sample) { return inverted ? sample : 255 - sample; });
        for (size_t channel = 0; channel < 3; ++channel)
            target[2 - channel] = static_cast<uint8_t>((light[channel] * light[3] + 127) / 255);
    }
}

std::optional<SrgbTransform> srgbTransform(std::span<const uint8_t> profile, SampleLayout layout,
                                           UntaggedColor untagged) {
    if (!profile.empty())
        return SrgbTransform::fromProfile(profile, layout);
    if (layout == SampleLayout::Bgrx && untagged == UntaggedColor::AdobeRgb)
        return SrgbTransform::fromAdobeRgb();
    return std::nullopt;
}

} // namespace

bool startsLikeJpeg(std::span<const uint8_t> file) {
    return file.size() >= 2 && file[0] == 0xff && file[1] == 0xd8;
}

std::optional<std::string> readJpegHeader(std::span<const uint8_t> file, PictureHeader &header) {
    Decoder decoder(file);
    if (!decoder.readHeader())
        return decoder.reason();
    const jpeg_decompress_struct &info = decoder.info;
    const auto pixels = uint64_t{info.image_width} * info.image_height;
    header.type = PhotographType::Jpeg;
    header.width = static_cast<int32_t>(info.image_width);
    header.height = static_cast<int32_t>(info.image_height);
    constexpr int kDotsPerInch = 1, kDotsPerCentimetre = 2;
    if (info.saw_JFIF_marker &&
        (info.density_unit == kDotsPerInch || info.density_unit == kDotsPerCentimetre)) {
        const float toInches = info.density_unit == kDotsPerCentimetre ? 2.54f : 1.0f;
        header.xDensity = static_cast<float>(info.X_density) * toInches;
        header.yDensity = static_cast<float>(info.Y_density) * toInches;
    }
    if (info.arith_code == FALSE) // Huffman coding spends at least one bit on each block of 64 pixels
        header.smallestFile = pixels / (64 * 8);
    if (info.progressive_mode) // keeps all coefficients until the last scan
        header.decodingBytes = pixels * static_cast<size_t>(info.num_components) * sizeof(JCOEF);
    return std::nullopt;
}

std::optional<std::string> decodeJpeg(std::span<const uint8_t> file, UntaggedColor untagged,
                                      BgrxImage &image) {
    Decoder decoder(file);
    if (!decoder.readHeader())
        return decoder.reason();
    image = allocBgrx(static_cast<int32_t>(decoder.info.image_width),
                      static_cast<int32_t>(decoder.info.image_height));
    if (!image.pixels)
        return kOutOfMemory;

    const SampleLayout layout = sampleLayout(decoder.info);
    const auto transform = srgbTransform(decoder.colorProfile(), layout, untagged);
    const J_COLOR_SPACE samples = decodedSamples(layout, transform.has_value());
    if (!decoder.start(samples))
        return decoder.reason();

    std::vector<uint8_t> sampleRow;
    if (samples != JCS_EXT_BGRA)
        sampleRow.resize(image.lineBytes());
    for (int32_t y = 0; y < image.height; ++y) {
        uint8_t *row = image.row(y);
        uint8_t *decodedRow = sampleRow.empty() ? row : sampleRow.data();
        if (!decoder.readRow(decodedRow))
            return decoder.reason();
        if (decodedRow != row)
            std::memset(row, 255, image.lineBytes());
        if (transform)
            transform->apply(decodedRow, row, static_cast<uint32_t>(image.width));
        else if (samples == JCS_CMYK)
            plainCmykToBgrx(decodedRow, row, image.width, layout == SampleLayout::InvertedCmyk);
    }
    if (!decoder.finish())
        return decoder.reason();
    return std::nullopt;
}

} // namespace tristop
