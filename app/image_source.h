// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "app/photo_metadata.h"
#include "app/pixels.h"
#include "app/upright_drawing.h"
#include "engine/hdr_engine.h"

namespace tristop {

struct ImageSize {
    double width = 0;
    double height = 0;

    bool operator==(const ImageSize &) const = default;
};

/**
 * Reader of one photograph file: JPEG, camera RAW or TIFF, by its content. Load it with initWithPhoto, then
 * decode it with open; the metadata accessors are meaningful once it is loaded, transform and drawing once it
 * is open.
 *
 * The file is never changed and not kept open. A reader belongs to one thread at a time.
 */
class CBImageSource {
public:
    /// Takes the path and reads the metadata. On false the metadata are unchanged and failure() says why.
    bool initWithPhoto(const std::string &path);

    /**
     * Decodes the picture to sRGB, as stored, and corrects the metadata's pixel size should the decoder's
     * differ. False when any part of it cannot be decoded; then failure() says why.
     */
    bool open();

    /// initWithPhoto for a file's whole content; the path tells nothing but the name.
    bool load(std::span<const uint8_t> file, const std::string &path = "");
    /// open for a file's whole content.
    bool decode(std::span<const uint8_t> file);

    /// Memory that open takes beside the decoded picture while it runs, in bytes.
    size_t decodingBytes() const { return bytesToDecode; }

    /// Why initWithPhoto or open returned false, in words that follow the file's name.
    const std::string &failure() const { return failureReason; }

    const std::string &imagePath() const { return path; }
    void setImagePath(const std::string &imagePath) { path = imagePath; }
    const ImageMetadata &imageMetadata() const { return metadata; }
    void setImageMetadata(const ImageMetadata &imageMetadata) { metadata = imageMetadata; }
    /// The decoded picture as stored; null until open succeeds.
    const BgrxImage *image() const { return decoded ? &*decoded : nullptr; }

    const ExifMetadata *EXIF() const; ///< null when the file has none
    float dpiWidth() const;           ///< dots an inch, 72 when absent
    float dpiHeight() const;
    float imageExposure() const;     ///< exposure bias in EV, 0 when absent
    int64_t imageISO() const;        ///< the first ISO speed rating, 0 when there is none
    double imageFocusLength() const; ///< focal length in millimetres, 0 when absent
    int orientation() const;         ///< EXIF orientation 1 to 8, 1 when absent or out of range

    /// The upright picture's size in pixels for an orientation. Like the others below, callers pass
    /// orientation().
    ImageSize imageSize(int orientation) const;

    /**
     * Turns the stored picture upright, in coordinates with the origin at the bottom left and y up, and
     * stretches the axis of the lower resolution until both are equal.
     */
    AffineTransform imageTransform() const;

    /**
     * Draws the upright picture into `svlOffscreen`, which is described and allocated; it may be wider than
     * the picture by the up to three pixels that round its width up to a multiple of four. Converts to
     * 0x501 and 0x601; any other format is left unfilled, which counts as success. False when the reader is
     * not open, the picture does not cover the record, or there is not enough memory.
     */
    bool image(int orientation, Offscreen *svlOffscreen) const;

    /// The upright picture; none when the reader is not open or there is not enough memory.
    std::optional<RgbImage> image(int orientation) const;

private:
    bool succeeded(const std::optional<std::string> &problem);
    template <typename Use>
    bool forEachStrip(int orientation, Use use) const;

    std::string path;
    ImageMetadata metadata;
    std::optional<BgrxImage> decoded;
    size_t bytesToDecode = 0;
    std::string failureReason;
};

} // namespace tristop
