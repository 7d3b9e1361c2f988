// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/image_source.h"

#include <algorithm>
#include <new>

#include <libyuv.h>

#include "app/file_content.h"
#include "app/picture_decoder.h"

namespace tristop {

bool CBImageSource::succeeded(const std::optional<std::string> &problem) {
    failureReason = problem.value_or("");
    return !problem;
}

bool CBImageSource::initWithPhoto(const std::string &photo) {
    path = photo;
    std::vector<uint8_t> file;
    return succeeded(readFileContent(path, file)) && load(file, path);
}

bool CBImageSource::load(std::span<const uint8_t> file, const std::string &photo) {
    path = photo;
    PictureHeader header;
    if (!succeeded(readPictureHeader(file, typeBySuffix(path), header)))
        return false;
    metadata = tristop::imageMetadata(file, header);
    bytesToDecode = file.size() + header.decodingBytes;
    return true;
}

bool CBImageSource::open() {
    std::vector<uint8_t> file;
    return succeeded(readFileContent(path, file)) && decode(file);
}

bool CBImageSource::decode(std::span<const uint8_t> file) {
    // Cameras set to Adobe RGB say so in EXIF and may leave the profile out.
    const bool adobeRgb = EXIF() != nullptr && EXIF()->interoperabilityIndex == "R03";
    BgrxImage picture;
    if (!succeeded(decodePicture(file, adobeRgb ? UntaggedColor::AdobeRgb : UntaggedColor::Srgb, picture)))
        return false;
    metadata.pixelWidth = static_cast<float>(picture.width);
    metadata.pixelHeight = static_cast<float>(picture.height);
    decoded = std::move(picture);
    return true;
}

const ExifMetadata *CBImageSource::EXIF() const {
    return metadata.exif ? &*metadata.exif : nullptr;
}

float CBImageSource::dpiWidth() const {
    return metadata.dpiWidth == 0 ? 72.0f : metadata.dpiWidth;
}

float CBImageSource::dpiHeight() const {
    return metadata.dpiHeight == 0 ? 72.0f : metadata.dpiHeight;
}

float CBImageSource::imageExposure() const {
    return EXIF() != nullptr ? EXIF()->exposureBiasValue : 0;
}

int64_t CBImageSource::imageISO() const {
    return EXIF() != nullptr && !EXIF()->isoSpeedRatings.empty() ? EXIF()->isoSpeedRatings[0] : 0;
}

double CBImageSource::imageFocusLength() const {
    return EXIF() != nullptr ? EXIF()->focalLength : 0;
}

int CBImageSource::orientation() const {
    const int64_t value = metadata.orientation;
    return value < 1 || value > 8 ? 1 : static_cast<int>(value);
}

ImageSize CBImageSource::imageSize(int orientation) const {
    const bool quarterTurn = orientation >= 5 && orientation <= 8;
    return quarterTurn ? ImageSize{metadata.pixelHeight, metadata.pixelWidth}
                       : ImageSize{metadata.pixelWidth, metadata.pixelHeight};
}

AffineTransform CBImageSource::imageTransform() const {
    const float dw = dpiWidth(), dh = dpiHeight();
    const float stretchX = dw < dh ? dh / dw : 1.0f;
    const float stretchY = dh < dw ? dw / dh : 1.0f;
    const float stretchedWidth = (decoded ? static_cast<float>(decoded->width) : 0.0f) * stretchX;
    const float stretchedHeight = (decoded ? static_cast<float>(decoded->height) : 0.0f) * stretchY;
    return uprightTransform(orientation(), stretchX, stretchY, stretchedWidth, stretchedHeight);
}

/// An upright picture's size in whole pixels; 0 x 0 when it is empty or larger than a picture may be.
struct Canvas {
    int32_t width = 0;
    int32_t height = 0;

    explicit Canvas(ImageSize size) {
        const auto drawable = [](double side) { return side >= 1 && side <= kLargestPictureBytes; };
        if (!drawable(size.width) || !drawable(size.height) ||
            !fitsPictureLimit(static_cast<int64_t>(size.width), static_cast<int64_t>(size.height)))
            return;
        width = static_cast<int32_t>(size.width);
        height = static_cast<int32_t>(size.height);
    }
};

/**
 * Calls use(bgrx, first, count) for strips of rows of the upright picture, from the top down. Each strip is
 * followed by the start of the next row, or by zero bytes. False when the reader is not open or there is
 * not enough memory.
 */
template <typename Use>
bool CBImageSource::forEachStrip(int orientation, Use use) const {
    // Few enough to stay in the cache on their way. Even, so that strips hold whole rows of halved chroma.
    constexpr int32_t kStripRows = 16;
    const auto [width, height] = Canvas(imageSize(orientation));
    if (!decoded || width == 0)
        return false;
    const AffineTransform transform = imageTransform();
    const bool asStored =
        transform == AffineTransform{} && width == decoded->width && height == decoded->height;
    std::optional<UprightDrawing> drawing;
    PixelBuffer strip;
    if (!asStored) {
        try {
            drawing.emplace(*decoded, transform, width, height);
        } catch (const std::bad_alloc &) {
            return false;
        }
        strip = allocPixels(4 * static_cast<size_t>(width) * (kStripRows + 1) + kBgrxSpareBytes);
        if (!strip)
            return false;
    }
    for (int32_t first = 0; first < height; first += kStripRows) {
        if (drawing)
            drawing->drawRows(first, kStripRows + 1, strip.get());
        const uint8_t *bgrx =
            drawing ? strip.get() : decoded->pixels.get() + decoded->lineBytes() * static_cast<size_t>(first);
        use(bgrx, first, std::min(kStripRows, height - first));
    }
    return true;
}

bool CBImageSource::image(int orientation, Offscreen *svlOffscreen) const {
    const Offscreen &target = *svlOffscreen;
    const bool planar = target.u32PixelArrayFormat == HDR_FORMAT_I420;
    if (!decoded)
        return false;
    if (!planar && target.u32PixelArrayFormat != HDR_FORMAT_YUY2)
        return true;
    const Canvas canvas(imageSize(orientation));
    const int32_t width = canvas.width;
    if (target.ppu8Plane[0] == nullptr || target.i32Width > roundUpTo4(width) ||
        target.i32Height > canvas.height)
        return false;
    // libyuv takes a temporary copy of whatever it converts at once, and does not look whether it got one.
    return forEachStrip(orientation, [&](const uint8_t *bgrx, int32_t first, int32_t count) {
        const int rows = std::min(count, target.i32Height - first);
        if (rows <= 0)
            return;
        const auto rowOf = [&target](size_t plane, int32_t row) {
            return target.ppu8Plane[plane] + static_cast<ptrdiff_t>(row) * target.pi32Pitch[plane];
        };
        if (planar)
            libyuv::ARGBToI420(bgrx, 4 * width, rowOf(0, first), target.pi32Pitch[0], rowOf(1, first / 2),
                               target.pi32Pitch[1], rowOf(2, first / 2), target.pi32Pitch[2], target.i32Width,
                               rows);
        else
            libyuv::ARGBToYUY2(bgrx, 4 * width, rowOf(0, first), target.pi32Pitch[0], target.i32Width, rows);
    });
}

std::optional<RgbImage> CBImageSource::image(int orientation) const {
    const Canvas canvas(imageSize(orientation));
    RgbImage result{canvas.width, canvas.height, 0, nullptr};
    result.lineBytes = 3 * static_cast<size_t>(result.width);
    result.pixels = allocPixels(result.lineBytes * static_cast<size_t>(result.height));
    const auto append = [&result](const uint8_t *bgrx, int32_t first, int32_t count) {
        libyuv::ARGBToRAW(bgrx, 4 * result.width,
                          result.pixels.get() + result.lineBytes * static_cast<size_t>(first),
                          static_cast<int>(result.lineBytes), result.width, count);
    };
    if (!result.pixels || !forEachStrip(orientation, append))
        return std::nullopt;
    return result;
}

} // namespace tristop
