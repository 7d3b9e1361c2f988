// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/raw_reader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <vector>

#include <libraw/libraw.h>

#include "app/file_error.h"

namespace tristop {
namespace {

/// A decoder without a file; it is too big for the stack.
std::unique_ptr<LibRaw> makeDecoder() {
    auto decoder = std::make_unique<LibRaw>(LIBRAW_OPIONS_NO_DATAERR_CALLBACK);
    libraw_output_params_t &settings = decoder->imgdata.params;
    settings.use_camera_wb = 1;
    // Without it a file that lacks a white balance would get one from its own picture.
    settings.raw_processing_options |= LIBRAW_PROCESSING_CAMERAWB_FALLBACK_TO_DAYLIGHT;
    settings.no_auto_bright = 1;
    settings.adjust_maximum_thr = 0; // white is the sensor's, not this picture's brightest reading
    settings.highlight = 0;          // clip
    settings.user_flip = 0;          // turned upright later, with all other photographs
    settings.output_color = 1;       // linear sRGB
    constexpr int kPatternedPixelGrouping = 2;
    settings.user_qual = kPatternedPixelGrouping;
    return decoder;
}

/**
 * A stream as LibRaw reads it, with a guard against two of its faults. It appends words of its own to a
 * camera's names in their place, whether or not they fit: names are cut short of theirs. And it silently
 * passes over parts that do not even begin as they should, and leaves their readings as the heap had them:
 * these are cleared when it first turns to them, once clearsReadings is set.
 */
template <typename Stream>
class GuardedStream : public Stream {
public:
    template <typename... Source>
    explicit GuardedStream(libraw_data_t &decoded, Source... source) : Stream(source...), decoded(decoded) {}

    int read(void *target, size_t size, size_t count) override {
        const int result = Stream::read(target, size, count);
        cutName(target);
        return result;
    }

    char *gets(char *target, int size) override {
        char *const result = Stream::gets(target, size);
        cutName(target);
        return result;
    }

    int seek(INT64 offset, int origin) override {
        uint16_t *const readings = decoded.rawdata.raw_image;
        if (clearsReadings && readings != nullptr) {
            std::fill_n(readings, size_t{decoded.sizes.raw_width} * decoded.sizes.raw_height, uint16_t{0});
            clearsReadings = false;
        }
        return Stream::seek(offset, origin);
    }

    bool clearsReadings = false;

private:
    void cutName(const void *target) {
        constexpr size_t kLongestName = 40; // of 63; cameras' own take about half of it
        for (char *const name : {decoded.idata.make, decoded.idata.model, decoded.color.UniqueCameraModel})
            if (target == name)
                name[kLongestName] = '\0';
    }

    libraw_data_t &decoded;
};

/// LibRaw over a file's content, which must stay.
class Decoder {
public:
    explicit Decoder(std::span<const uint8_t> file)
        : content(decoder->imgdata, const_cast<uint8_t *>(file.data()), file.size()) {} // only reads it

    int open() { return decoder->open_datastream(&content); }
    int unpack() {
        content.clearsReadings = true;
        const int error = decoder->unpack();
        content.clearsReadings = false;
        return error;
    }
    LibRaw *operator->() const { return decoder.get(); }
    LibRaw &operator*() const { return *decoder; }

private:
    std::unique_ptr<LibRaw> decoder = makeDecoder();
    GuardedStream<LibRaw_buffer_datastream> content;
};

/// LibRaw lowers white by the black level that all four of its channels share. Readings without a filter may
/// give one for each of their three channels; zero for the fourth would leave white where it was, and grey.
void completeBlackLevels(libraw_data_t &file) {
    auto &black = file.rawdata.color.cblack; // where development takes the levels from
    if (file.idata.filters == 0 && file.idata.colors == 3)
        black[3] = std::min({black[0], black[1], black[2]});
}

std::string reasonInWords(int error) {
    switch (error) {
    case LIBRAW_IO_ERROR:
        return kTruncated;
    case LIBRAW_DATA_ERROR:
        return kDamaged;
    case LIBRAW_UNSUFFICIENT_MEMORY:
        return kOutOfMemory;
    case LIBRAW_FILE_UNSUPPORTED:
        return "is a camera RAW file of a kind that cannot be decoded";
    default:
        return std::string("cannot be decoded: ") + LibRaw::strerror(error);
    }
}

/// The EXIF orientation for LibRaw's: degrees, or bits that mirror the columns (1) and rows (2) and swap
/// them (4).
int exifOrientation(int flip) {
    switch (((flip % 360) + 360) % 360) {
    case 90:
        return 6;
    case 180:
        return 3;
    case 270:
        return 8;
    default:
        break;
    }
    constexpr std::array<int, 8> kOrientations = {1, 2, 4, 3, 5, 8, 6, 7};
    return kOrientations[static_cast<size_t>(flip & 7)];
}

/// The 8-bit sRGB sample for each 16-bit linear one (IEC 61966-2-1).
const std::vector<uint8_t> &srgbCurve() {
    static const std::vector<uint8_t> curve = [] {
        std::vector<uint8_t> samples(0x10000);
        for (size_t i = 0; i < samples.size(); ++i) {
            const double light = static_cast<double>(i) / 0xffff;
            const double encoded =
                light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
            samples[i] = static_cast<uint8_t>(255 * encoded + 0.5);
        }
        return samples;
    }();
    return curve;
}

/// Whether anything was read of a sensor: even in the dark it reads some noise.
bool hasReadings(const libraw_data_t &decoded) {
    const uint16_t *const readings = decoded.rawdata.raw_image;
    return readings == nullptr ||
           std::any_of(readings, readings + size_t{decoded.sizes.raw_width} * decoded.sizes.raw_height,
                       [](uint16_t reading) { return reading != 0; });
}

void copyAsBgrx(const libraw_data_t &developed, BgrxImage &image) {
    const std::vector<uint8_t> &curve = srgbCurve();
    const bool gray = developed.idata.colors < 3;
    const size_t red = 0, green = gray ? 0 : 1, blue = gray ? 0 : 2;
    const size_t pixels = static_cast<size_t>(image.width) * static_cast<size_t>(image.height);
    uint8_t *target = image.pixels.get();
    for (size_t i = 0; i < pixels; ++i, target += 4) {
        const auto &source = developed.image[i];
        target[0] = curve[source[blue]];
        target[1] = curve[source[green]];
        target[2] = curve[source[red]];
        target[3] = 255;
    }
}

/// readRawHeader with a decoder that has opened the file.
RawHeaderResult headerOf(LibRaw &decoder, PictureHeader &header) {
    const libraw_image_sizes_t &sizes = decoder.imgdata.sizes;
    const int flip = sizes.flip; // lost in the next step, which leaves the turning to us
    if (const int error = decoder.adjust_sizes_info_only(); error != LIBRAW_SUCCESS)
        return {true, reasonInWords(error)};
    // The whole sensor is decoded, with the masked border that is cut off.
    if (sizes.raw_width > 0 && !fitsPictureLimit(sizes.raw_width, sizes.raw_height))
        return {true, tooLarge(sizes.raw_width, sizes.raw_height)};
    header.type = PhotographType::Raw;
    header.width = sizes.iwidth;
    header.height = sizes.iheight;
    header.orientation = exifOrientation(flip);
    header.isoSpeed = decoder.imgdata.other.iso_speed;
    header.focalLength = decoder.imgdata.other.focal_len;
    // Deflated readings, the smallest ones that there are, hardly take less than a byte for 500 of them.
    constexpr size_t kMostReadingsPerByte = 512;
    header.smallestFile = size_t{sizes.raw_width} * size_t{sizes.raw_height} / kMostReadingsPerByte;
    // The readings, of one channel or four, and the picture that is made of them.
    const size_t channels = decoder.imgdata.idata.filters != 0 ? 1 : 4;
    header.decodingBytes =
        (channels + 4) * sizeof(uint16_t) * size_t{sizes.raw_width} * size_t{sizes.raw_height};
    return {true, std::nullopt};
}

} // namespace

RawHeaderResult readRawHeader(std::span<const uint8_t> file, PictureHeader &header) {
    Decoder decoder(file);
    return decoder.open() == LIBRAW_SUCCESS ? headerOf(*decoder, header) : RawHeaderResult{};
}

RawHeaderResult readRawHeader(const std::string &path, PictureHeader &header) {
    const auto decoder = makeDecoder();
    GuardedStream<LibRaw_file_datastream> file(decoder->imgdata, path.c_str());
    return decoder->open_datastream(&file) == LIBRAW_SUCCESS ? headerOf(*decoder, header) : RawHeaderResult{};
}

std::optional<std::string> decodeRaw(std::span<const uint8_t> file, BgrxImage &image) {
    Decoder decoder(file);
    if (const int error = decoder.open(); error != LIBRAW_SUCCESS)
        return reasonInWords(error);
    if (const int error = decoder.unpack(); error != LIBRAW_SUCCESS)
        return reasonInWords(error);
    if (decoder->error_count() > 0 || !hasReadings(decoder->imgdata))
        return kDamaged;
    completeBlackLevels(decoder->imgdata);
    if (const int error = decoder->dcraw_process(); error != LIBRAW_SUCCESS)
        return reasonInWords(error);
    const libraw_data_t &developed = decoder->imgdata;
    const int32_t width = developed.sizes.width, height = developed.sizes.height;
    if (developed.image == nullptr || width < 1 || height < 1 || !fitsPictureLimit(width, height))
        return kDamaged;
    image = allocBgrx(width, height);
    if (!image.pixels)
        return kOutOfMemory;
    copyAsBgrx(developed, image);
    return std::nullopt;
}

} // namespace tristop
