// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/tiff_reader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include <tiffio.h>

#include "app/color_profile.h"
#include "app/file_error.h"

namespace tristop {
namespace {

/// A file's content as libtiff reads it.
struct Content {
    std::span<const uint8_t> bytes;
    uint64_t position = 0;
};

Content &content(thandle_t handle) {
    return *static_cast<Content *>(handle);
}

tmsize_t readContent(thandle_t handle, void *target, tmsize_t size) {
    auto &[bytes, position] = content(handle);
    const uint64_t left = bytes.size() - std::min<uint64_t>(position, bytes.size());
    const auto count = static_cast<size_t>(std::min<uint64_t>(left, static_cast<uint64_t>(size)));
    if (count > 0)
        std::memcpy(target, bytes.data() + position, count);
    position += count;
    return static_cast<tmsize_t>(count);
}

tmsize_t writeNothing(thandle_t, void *, tmsize_t) {
    return 0;
}

toff_t seekContent(thandle_t handle, toff_t offset, int origin) {
    auto &[bytes, position] = content(handle);
    position = offset + (origin == SEEK_CUR ? position : origin == SEEK_END ? bytes.size() : 0);
    return position;
}

int closeNothing(thandle_t) {
    return 0;
}

toff_t contentSize(thandle_t handle) {
    return content(handle).bytes.size();
}

int mapContent(thandle_t handle, void **base, toff_t *size) {
    *base = const_cast<uint8_t *>(content(handle).bytes.data()); // only reads it
    *size = content(handle).bytes.size();
    return 1;
}

void unmapNothing(thandle_t, void *, toff_t) {}

int swallowMessage(TIFF *, void *, const char *, const char *, va_list) {
    return 1;
}

struct OptionsDeleter {
    void operator()(TIFFOpenOptions *options) const { TIFFOpenOptionsFree(options); }
};
struct TiffDeleter {
    void operator()(TIFF *tiff) const { TIFFClose(tiff); }
};
using Tiff = std::unique_ptr<TIFF, TiffDeleter>;

/// Opens the content, which must stay; null when it cannot be read as TIFF.
Tiff open(Content &content) {
    const std::unique_ptr<TIFFOpenOptions, OptionsDeleter> options(TIFFOpenOptionsAlloc());
    if (!options)
        return nullptr;
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), swallowMessage, nullptr);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), swallowMessage, nullptr);
    // A strip or a table that claims more than any accepted picture has is damaged.
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), static_cast<tmsize_t>(4 * kLargestPictureBytes));
    return Tiff(TIFFClientOpenExt("", "r", &content, readContent, writeNothing, seekContent, closeNothing,
                                  contentSize, mapContent, unmapNothing, options.get()));
}

template <typename Value>
Value entry(TIFF *tiff, uint32_t tag, Value absent = {}) {
    Value value{};
    return TIFFGetFieldDefaulted(tiff, tag, &value) == 1 ? value : absent;
}

/// How the pixels of a picture are stored.
struct Storage {
    static constexpr uint16_t kMostSamples = 8; // more are no photograph, and would take memory for nothing

    uint16_t photometric, bits, samples, planes, format;

    explicit Storage(TIFF *tiff)
        : photometric(entry<uint16_t>(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MASK)),
          bits(entry<uint16_t>(tiff, TIFFTAG_BITSPERSAMPLE)),
          samples(entry<uint16_t>(tiff, TIFFTAG_SAMPLESPERPIXEL)),
          planes(entry<uint16_t>(tiff, TIFFTAG_PLANARCONFIG)),
          format(entry<uint16_t>(tiff, TIFFTAG_SAMPLEFORMAT)) {}

    bool isGray() const { return photometric == PHOTOMETRIC_MINISBLACK; }
    /// Samples of a pixel that are its colour; others are transparency and the like.
    size_t colors() const { return isGray() ? 1 : 3; }

    /// Whole rows of grey or RGB pixels with whole bytes a sample.
    bool isPlain(TIFF *tiff) const {
        return (isGray() || photometric == PHOTOMETRIC_RGB) && samples >= colors() &&
               samples <= kMostSamples && (bits == 8 || bits == 16) && planes == PLANARCONFIG_CONTIG &&
               format == SAMPLEFORMAT_UINT && !TIFFIsTiled(tiff);
    }
};

std::span<const uint8_t> colorProfile(TIFF *tiff) {
    uint32_t size = 0;
    const uint8_t *bytes = nullptr;
    if (TIFFGetField(tiff, TIFFTAG_ICCPROFILE, &size, &bytes) != 1)
        return {};
    return {bytes, size};
}

/// The colour samples of a row in 16 bits.
void widenRow(const uint8_t *row, const Storage &storage, std::vector<uint16_t> &samples) {
    const size_t colors = storage.colors(), bytesPerSample = storage.bits / 8;
    const size_t bytesPerPixel = bytesPerSample * storage.samples;
    for (size_t i = 0; i < samples.size(); ++i) {
        const uint8_t *sample = row + i / colors * bytesPerPixel + i % colors * bytesPerSample;
        if (bytesPerSample == 1)
            samples[i] = static_cast<uint16_t>(*sample * 257);
        else
            std::memcpy(&samples[i], sample, 2); // in the machine's byte order already
    }
}

void narrowRow(const std::vector<uint16_t> &samples, size_t colors, uint8_t *bgrx) {
    const size_t green = colors > 1 ? 1 : 0, blue = colors > 1 ? 2 : 0;
    const auto narrow = [](uint16_t sample) { return static_cast<uint8_t>((sample + 128) / 257); };
    for (size_t i = 0; i < samples.size(); i += colors, bgrx += 4) {
        bgrx[0] = narrow(samples[i + blue]);
        bgrx[1] = narrow(samples[i + green]);
        bgrx[2] = narrow(samples[i]);
    }
}

std::optional<std::string> decodePlain(TIFF *tiff, const Storage &storage, BgrxImage &image) {
    const size_t bytesInRow = static_cast<size_t>(image.width) * storage.samples * (storage.bits / 8u);
    std::vector<uint8_t> row(
        std::max(bytesInRow, static_cast<size_t>(std::max<tmsize_t>(TIFFScanlineSize(tiff), 0))));
    std::vector<uint16_t> samples(static_cast<size_t>(image.width) * storage.colors());
    const auto transform = SrgbTransform::fromProfile(
        colorProfile(tiff), storage.isGray() ? SampleLayout::Gray16 : SampleLayout::Rgb16);
    for (int32_t y = 0; y < image.height; ++y) {
        if (TIFFReadScanline(tiff, row.data(), static_cast<uint32_t>(y)) != 1)
            return kDamaged;
        widenRow(row.data(), storage, samples);
        std::memset(image.row(y), 255, image.lineBytes());
        if (transform)
            transform->apply(samples.data(), image.row(y), static_cast<uint32_t>(image.width));
        else
            narrowRow(samples, storage.colors(), image.row(y));
    }
    return std::nullopt;
}

/// Through libtiff's own conversion to 8 bits, for palettes, tiles, CMYK and the like.
std::optional<std::string> decodeAsShown(TIFF *tiff, const Storage &storage, BgrxImage &image) {
    std::array<char, 1024> message{};
    TIFFRGBAImage reader{};
    if (TIFFRGBAImageOK(tiff, message.data()) != 1 ||
        TIFFRGBAImageBegin(&reader, tiff, 1, message.data()) != 1)
        return std::string("is a TIFF file of a kind that cannot be decoded");
    reader.req_orientation = reader.orientation; // turned upright later, with all other photographs
    const int read =
        TIFFRGBAImageGet(&reader, reinterpret_cast<uint32_t *>(image.pixels.get()),
                         static_cast<uint32_t>(image.width), static_cast<uint32_t>(image.height));
    TIFFRGBAImageEnd(&reader);
    if (read != 1)
        return kDamaged;
    const auto transform = storage.photometric == PHOTOMETRIC_RGB
                               ? SrgbTransform::fromProfile(colorProfile(tiff), SampleLayout::Bgrx)
                               : std::nullopt;
    for (int32_t y = 0; y < image.height; ++y) {
        uint8_t *pixel = image.row(y);
        for (int32_t x = 0; x < image.width; ++x, pixel += 4) {
            std::swap(pixel[0], pixel[2]);
            pixel[3] = 255;
        }
        if (transform)
            transform->apply(image.row(y), image.row(y), static_cast<uint32_t>(image.width));
    }
    return std::nullopt;
}

} // namespace

bool startsLikeTiff(std::span<const uint8_t> file) {
    constexpr std::array<std::array<uint8_t, 4>, 4> kStarts = {
        {{'I', 'I', 42, 0}, {'M', 'M', 0, 42}, {'I', 'I', 43, 0}, {'M', 'M', 0, 43}}};
    return file.size() >= 4 && std::ranges::any_of(kStarts, [file](const auto &start) {
               return std::equal(start.begin(), start.end(), file.begin());
           });
}

std::optional<std::string> readTiffHeader(std::span<const uint8_t> file, PictureHeader &header) {
    Content source{file};
    const Tiff tiff = open(source);
    if (!tiff)
        return "is damaged or truncated: its TIFF directory cannot be read";
    const auto width = entry<uint32_t>(tiff.get(), TIFFTAG_IMAGEWIDTH);
    const auto height = entry<uint32_t>(tiff.get(), TIFFTAG_IMAGELENGTH);
    // Sizes beyond a signed number are too large for certain, which is told of them like of any other.
    header.type = PhotographType::Tiff;
    header.width = static_cast<int32_t>(std::min<uint32_t>(width, INT32_MAX));
    header.height = static_cast<int32_t>(std::min<uint32_t>(height, INT32_MAX));
    if (entry<uint16_t>(tiff.get(), TIFFTAG_COMPRESSION) == COMPRESSION_NONE)
        header.smallestFile =
            (uint64_t{width} * entry<uint16_t>(tiff.get(), TIFFTAG_BITSPERSAMPLE) + 7) / 8 * height;
    // A whole strip is decoded at once, which may be the whole picture; so is what libtiff shows.
    header.decodingBytes = size_t{8} * width * height;
    return std::nullopt;
}

std::optional<std::string> decodeTiff(std::span<const uint8_t> file, BgrxImage &image) {
    Content source{file};
    const Tiff tiff = open(source);
    if (!tiff)
        return kDamaged;
    image = allocBgrx(static_cast<int32_t>(entry<uint32_t>(tiff.get(), TIFFTAG_IMAGEWIDTH)),
                      static_cast<int32_t>(entry<uint32_t>(tiff.get(), TIFFTAG_IMAGELENGTH)));
    if (!image.pixels)
        return kOutOfMemory;
    const Storage storage(tiff.get());
    return storage.isPlain(tiff.get()) ? decodePlain(tiff.get(), storage, image)
                                       : decodeAsShown(tiff.get(), storage, image);
}

} // namespace tristop
