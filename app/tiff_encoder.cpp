// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <cstdarg>
#include <cstring>
#include <exception>
#include <future>
#include <memory>
#include <new>

#include <exiv2/exiv2.hpp>
#include <tiffio.h>

#include "app/color_profile.h"
#include "app/encoder_failure.h"
#include "app/picture_encoding.h"

namespace tristop {
namespace {

/// A file in memory that libtiff writes to and reads back from, and what went wrong in it.
struct MemoryFile {
    std::vector<uint8_t> bytes;
    size_t position = 0;
    std::string failure;

    static MemoryFile &of(thandle_t handle) { return *static_cast<MemoryFile *>(handle); }

    static tmsize_t read(thandle_t handle, void *target, tmsize_t size) {
        MemoryFile &file = of(handle);
        const size_t left = file.bytes.size() - std::min(file.position, file.bytes.size());
        const size_t count = std::min(left, static_cast<size_t>(size));
        std::memcpy(target, file.bytes.data() + file.position, count);
        file.position += count;
        return static_cast<tmsize_t>(count);
    }
    static tmsize_t write(thandle_t handle, void *source, tmsize_t size) {
        MemoryFile &file = of(handle);
        const size_t end = file.position + static_cast<size_t>(size);
        try {
            if (end > file.bytes.size())
                file.bytes.resize(end);
        } catch (const std::bad_alloc &) { // must not pass through libtiff
            file.failure = kNoMemoryReason;
            return 0;
        }
        std::memcpy(file.bytes.data() + file.position, source, static_cast<size_t>(size));
        file.position = end;
        return size;
    }
    static toff_t seek(thandle_t handle, toff_t offset, int origin) {
        MemoryFile &file = of(handle);
        const size_t base = origin == SEEK_SET ? 0 : origin == SEEK_CUR ? file.position : file.bytes.size();
        return file.position = base + static_cast<size_t>(offset); // backward wraps round as it should
    }
    static toff_t size(thandle_t handle) { return of(handle).bytes.size(); }
    static int close(thandle_t) { return 0; }
    static int noMap(thandle_t, void **, toff_t *) { return 0; }
    static void noUnmap(thandle_t, void *, toff_t) {}

    /// Keeps the first thing that went wrong.
    static int fail(TIFF *, void *handle, const char *, const char *format, va_list values) {
        MemoryFile &file = of(handle);
        char message[200];
        std::vsnprintf(message, sizeof message, format, values);
        if (file.failure.empty())
            file.failure = message;
        return 1;
    }
};

struct TiffCloser {
    void operator()(TIFF *tiff) const { TIFFClose(tiff); }
};
using Tiff = std::unique_ptr<TIFF, TiffCloser>;

Tiff openTiff(MemoryFile &file) {
    const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(TIFFOpenOptionsAlloc(),
                                                                                   TIFFOpenOptionsFree);
    if (!options)
        return nullptr;
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), MemoryFile::fail, &file);
    return Tiff(TIFFClientOpenExt("", "w", &file, MemoryFile::read, MemoryFile::write, MemoryFile::seek,
                                  MemoryFile::close, MemoryFile::size, MemoryFile::noMap, MemoryFile::noUnmap,
                                  options.get()));
}

uint16_t compressionTag(TiffCompression compression) {
    switch (compression) {
    case TiffCompression::None:
        return COMPRESSION_NONE;
    case TiffCompression::Lzw:
        return COMPRESSION_LZW;
    case TiffCompression::PackBits:
        return COMPRESSION_PACKBITS;
    case TiffCompression::Deflate:
        break;
    }
    return COMPRESSION_ADOBE_DEFLATE;
}

/// Sets what the strips of a picture depend on.
void setStripFields(TIFF *tiff, const PictureView &picture, int32_t stripRows, TiffCompression compression) {
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, picture.width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, picture.height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 3);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, stripRows);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, compressionTag(compression));
    constexpr int kDeflateLevel = 4; // beyond it, files shrink by a few hundredths in several times the time
    if (compression == TiffCompression::Deflate)
        TIFFSetField(tiff, TIFFTAG_ZIPQUALITY, kDeflateLevel);
    if (compression == TiffCompression::Lzw || compression == TiffCompression::Deflate)
        TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
}

/// Writes all strips of a picture. False on failure.
bool writeStrips(TIFF *tiff, const PictureView &picture, int32_t stripRows) {
    // Whole strips, as libtiff compresses those several times as fast as single rows.
    std::vector<uint8_t> strip(picture.rgbBytes() * static_cast<size_t>(stripRows));
    for (int32_t y = 0; y < picture.height; y += stripRows) {
        const int32_t rows = std::min(stripRows, picture.height - y);
        for (int32_t i = 0; i < rows; ++i)
            picture.readRgbRow(y + i, strip.data() + picture.rgbBytes() * static_cast<size_t>(i));
        const auto bytes = static_cast<tmsize_t>(picture.rgbBytes() * static_cast<size_t>(rows));
        if (TIFFWriteEncodedStrip(tiff, static_cast<uint32_t>(y / stripRows), strip.data(), bytes) != bytes)
            return false;
    }
    return true;
}

/// Part of a picture in a TIFF file in memory of its own.
struct CompressedPart {
    MemoryFile file;
    Tiff tiff; ///< null on failure
};

std::unique_ptr<CompressedPart> compressPart(const PictureView &picture, int32_t stripRows,
                                             TiffCompression compression) {
    auto part = std::make_unique<CompressedPart>();
    part->tiff = openTiff(part->file);
    if (part->tiff)
        setStripFields(part->tiff.get(), picture, stripRows, compression);
    if (part->tiff && !writeStrips(part->tiff.get(), picture, stripRows))
        part->tiff.reset();
    return part;
}

/// Writes the strips of a picture, compressed in parts on several threads; the bytes are those of
/// writeStrips. False on failure.
bool writeStripsInParts(TIFF *tiff, const PictureView &picture, int32_t stripRows,
                        TiffCompression compression) {
    constexpr int32_t kParts = 8;
    const int32_t strips = (picture.height + stripRows - 1) / stripRows;
    const int32_t partRows = (strips + kParts - 1) / kParts * stripRows;
    std::vector<std::future<std::unique_ptr<CompressedPart>>> parts;
    for (int32_t first = 0; first < picture.height; first += partRows) {
        PictureView rows = picture;
        rows.pixels = picture.row(first);
        rows.height = std::min(partRows, picture.height - first);
        parts.push_back(std::async(std::launch::async, compressPart, rows, stripRows, compression));
    }
    uint32_t strip = 0;
    for (auto &compressed : parts) {
        const auto part = compressed.get();
        if (!part->tiff)
            return false;
        for (uint32_t i = 0; i < TIFFNumberOfStrips(part->tiff.get()); ++i, ++strip) {
            uint8_t *bytes = part->file.bytes.data() + TIFFGetStrileOffset(part->tiff.get(), i);
            const auto size = static_cast<tmsize_t>(TIFFGetStrileByteCount(part->tiff.get(), i));
            if (TIFFWriteRawStrip(tiff, strip, bytes, size) != size)
                return false;
        }
    }
    return true;
}

/// Appends a picture with its directory. False on failure.
bool writePage(TIFF *tiff, const PictureView &picture, int32_t dotsPerInch, TiffCompression compression,
               const std::vector<uint8_t> &profile) {
    constexpr size_t kStripBytes = 256 * 1024; // few enough strips, each small enough for a reader's cache
    const auto stripRows = static_cast<int32_t>(std::max<size_t>(kStripBytes / picture.rgbBytes(), 1));
    setStripFields(tiff, picture, stripRows, compression);
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    TIFFSetField(tiff, TIFFTAG_XRESOLUTION, static_cast<double>(dotsPerInch));
    TIFFSetField(tiff, TIFFTAG_YRESOLUTION, static_cast<double>(dotsPerInch));
    TIFFSetField(tiff, TIFFTAG_ICCPROFILE, static_cast<uint32_t>(profile.size()), profile.data());
    const bool written = compression == TiffCompression::None
                             ? writeStrips(tiff, picture, stripRows)
                             : writeStripsInParts(tiff, picture, stripRows, compression);
    return written && TIFFWriteDirectory(tiff) != 0;
}

/// The pictures as a file in memory, in `file`. Returns what went wrong, or nothing on success.
std::optional<std::string> encodePages(const std::vector<PictureView> &pictures, int32_t dotsPerInch,
                                       TiffCompression compression, MemoryFile &file) {
    const std::vector<uint8_t> profile = srgbProfile();
    Tiff tiff = openTiff(file);
    const bool written = tiff != nullptr && std::ranges::all_of(pictures, [&](const PictureView &picture) {
                             return writePage(tiff.get(), picture, dotsPerInch, compression, profile);
                         });
    tiff.reset();
    if (written && file.failure.empty())
        return std::nullopt;
    return !file.failure.empty() ? file.failure : kNoMemoryReason;
}

std::optional<std::string> writeBytes(const uint8_t *bytes, size_t size, std::FILE *file) {
    if (std::fwrite(bytes, 1, size, file) == size)
        return std::nullopt;
    return errnoMessage(errno);
}

/// Adds EXIF data to a TIFF file in memory and writes it.
std::optional<std::string> writeWithExif(const MemoryFile &tiff, const std::vector<uint8_t> &exif,
                                         std::FILE *file) {
    try {
        Exiv2::ExifData added;
        Exiv2::ExifParser::decode(added, exif.data(), static_cast<uint32_t>(exif.size()));
        const auto image = Exiv2::ImageFactory::open(tiff.bytes.data(), static_cast<long>(tiff.bytes.size()));
        image->readMetadata();
        for (const Exiv2::Exifdatum &entry : added)
            image->exifData()[entry.key()].setValue(&entry.value());
        image->writeMetadata();
        Exiv2::BasicIo &result = image->io();
        return writeBytes(result.mmap(), result.size(), file);
    } catch (const std::bad_alloc &) {
        return kNoMemoryReason;
    } catch (const std::exception &error) {
        return error.what();
    }
}

} // namespace

std::optional<std::string> encodeTiff(const PictureView &picture, const PictureProperties &properties,
                                      const EncodingOptions &options, std::FILE *file) {
    MemoryFile tiff;
    if (auto problem = encodePages({picture}, properties.dotsPerInch, options.tiffCompression, tiff))
        return problem;
    if (!properties.exif.empty())
        return writeWithExif(tiff, properties.exif, file);
    return writeBytes(tiff.bytes.data(), tiff.bytes.size(), file);
}

std::optional<std::string> encodeTiffPages(const std::vector<PictureView> &pictures, int32_t dotsPerInch,
                                           TiffCompression compression, std::FILE *file) {
    MemoryFile tiff;
    if (auto problem = encodePages(pictures, dotsPerInch, compression, tiff))
        return problem;
    return writeBytes(tiff.bytes.data(), tiff.bytes.size(), file);
}

} // namespace tristop
