// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/picture_decoder.h"

#include <algorithm>
#include <new>

#include "app/file_error.h"
#include "app/jpeg_reader.h"
#include "app/raw_reader.h"
#include "app/tiff_reader.h"

namespace tristop {
namespace {

std::string notAPhotograph(std::optional<PhotographType> expected) {
    if (expected == PhotographType::Jpeg)
        return "is not a JPEG picture";
    if (expected == PhotographType::Raw)
        return "is not a camera RAW file that can be read";
    if (expected == PhotographType::Tiff)
        return "is not a TIFF picture";
    return "is neither a JPEG, a camera RAW nor a TIFF file";
}

std::optional<std::string> readHeaderOfItsKind(std::span<const uint8_t> file,
                                               std::optional<PhotographType> expected,
                                               PictureHeader &header) {
    if (file.empty())
        return "is empty";
    if (startsLikeJpeg(file))
        return readJpegHeader(file, header);
    // Many RAW files are TIFF files outside, so the RAW decoder is asked first.
    const RawHeaderResult raw = readRawHeader(file, header);
    if (raw.recognised)
        return raw.problem;
    if (startsLikeTiff(file))
        return readTiffHeader(file, header);
    return notAPhotograph(expected);
}

std::optional<std::string> decodeItsKind(std::span<const uint8_t> file, const PictureHeader &header,
                                         UntaggedColor untagged, BgrxImage &image) {
    switch (header.type) {
    case PhotographType::Jpeg:
        return decodeJpeg(file, untagged, image);
    case PhotographType::Raw:
        return decodeRaw(file, image);
    case PhotographType::Tiff:
        break;
    }
    return decodeTiff(file, image);
}

} // namespace

std::string tooLarge(int32_t width, int32_t height) {
    return "is too large: " + std::to_string(width) + " x " + std::to_string(height) +
           " pixels, more than 536 megapixels";
}

std::optional<std::string> readPictureHeader(std::span<const uint8_t> file,
                                             std::optional<PhotographType> expected, PictureHeader &header) {
    PictureHeader read;
    if (auto problem = readHeaderOfItsKind(file, expected, read))
        return problem;
    if (read.width < 1 || read.height < 1)
        return "is damaged: its picture has no pixels";
    if (!fitsPictureLimit(read.width, read.height))
        return tooLarge(read.width, read.height);
    // Noticed before any memory is taken for the picture. Its noise keeps a photograph from becoming smaller.
    constexpr size_t kMostPixelsPerByte = 4096;
    const size_t pixels = static_cast<size_t>(read.width) * static_cast<size_t>(read.height);
    if (file.size() < std::max(read.smallestFile, pixels / kMostPixelsPerByte))
        return kTruncated;
    header = read;
    return std::nullopt;
}

std::optional<std::string> decodePicture(std::span<const uint8_t> file, UntaggedColor untagged,
                                         BgrxImage &image) {
    PictureHeader header;
    if (auto problem = readPictureHeader(file, std::nullopt, header))
        return problem;
    BgrxImage decoded;
    try {
        if (auto problem = decodeItsKind(file, header, untagged, decoded))
            return problem;
    } catch (const std::bad_alloc &) {
        return kOutOfMemory;
    }
    image = std::move(decoded);
    return std::nullopt;
}

} // namespace tristop
