// SPDX-License-Identifier: MIT
#include "engine/core/offscreen.h"

#include "engine/core/arithmetic.h"
#include "engine/core/memory.h"

#include <algorithm>
#include <array>

namespace hdr {

namespace {

/// How samples of a format lie in a row and over the planes.
enum class Family {
    packed3,
    packed4,
    packed422,
    planar420,
    planarHalfHeight,
    planar422,
    planar444,
    grey,
    semiPlanar420,
    semiPlanar422,
    unknown
};

Family familyOf(uint32_t format) {
    const auto within = [format](uint32_t first, uint32_t last) { return format >= first && format <= last; };
    if (format == 0x301 || format == 0x303 || within(0x401, 0x404))
        return Family::packed3;
    if (format == 0x302 || format == 0x304)
        return Family::packed4;
    if (within(0x501, 0x508))
        return Family::packed422;
    switch (format) {
    case 0x601:
    case 0x605:
        return Family::planar420;
    case 0x602:
    case 0x606:
        return Family::planarHalfHeight;
    case 0x603:
    case 0x607:
        return Family::planar422;
    case 0x604:
    case 0x608:
        return Family::planar444;
    case 0x701:
        return Family::grey;
    case 0x801:
    case 0x802:
        return Family::semiPlanar420;
    case 0x803:
        return Family::semiPlanar422;
    default:
        return Family::unknown;
    }
}

/// Pitches and heights of a format's planes; 0 for planes that it does not have.
struct Layout {
    std::array<int, 3> pitch{};
    std::array<int, 3> height{};
};

Layout layoutOf(Family family, int width, int height) {
    const int full = pad4(width);
    const int half = pad4(width / 2);
    switch (family) {
    case Family::packed3:
        return {{pad4(3 * width), 0, 0}, {height, 0, 0}};
    case Family::packed4:
        return {{4 * width, 0, 0}, {height, 0, 0}};
    case Family::packed422:
        return {{pad4(2 * width), 0, 0}, {height, 0, 0}};
    case Family::planar420:
        return {{full, half, half}, {height, height / 2, height / 2}};
    case Family::planarHalfHeight:
        return {{full, full, full}, {height, height / 2, height / 2}};
    case Family::planar422:
        return {{full, half, half}, {height, height, height}};
    case Family::planar444:
        return {{full, full, full}, {height, height, height}};
    case Family::grey:
        return {{full, 0, 0}, {height, 0, 0}};
    case Family::semiPlanar420:
        return {{full, full, 0}, {height, height / 2, 0}};
    case Family::semiPlanar422:
        return {{full, full, 0}, {height, height, 0}};
    case Family::unknown:
        break;
    }
    return {};
}

Rect wholeOf(const Offscreen &picture) {
    return {0, 0, picture.i32Width, picture.i32Height};
}

bool fits(const Rect &rectangle, const Offscreen &picture) {
    return rectangle.x0 >= 0 && rectangle.y0 >= 0 && rectangle.x1 >= rectangle.x0 &&
           rectangle.y1 >= rectangle.y0 && rectangle.x1 - rectangle.x0 <= picture.i32Width &&
           rectangle.y1 - rectangle.y0 <= picture.i32Height;
}

/// The two rectangles of a copy, resolved and found consistent.
struct CopyAreas {
    Rect to, from;
    int width() const { return to.x1 - to.x0; }
    int height() const { return to.y1 - to.y0; }
};

HdrStatus checkCopy(const Offscreen *destination, const Rect *destinationRectangle, const Offscreen *source,
                    const Rect *sourceRectangle, CopyAreas &areas) {
    if (!destination || !source || destination->u32PixelArrayFormat != source->u32PixelArrayFormat)
        return HDR_ERR_PARAM;
    areas.to = destinationRectangle ? *destinationRectangle : wholeOf(*destination);
    areas.from = sourceRectangle ? *sourceRectangle : wholeOf(*source);
    if (!fits(areas.to, *destination) || !fits(areas.from, *source))
        return HDR_ERR_PARAM;
    if (areas.width() != areas.from.x1 - areas.from.x0 || areas.height() != areas.from.y1 - areas.from.y0)
        return HDR_ERR_PARAM;
    return HDR_OK;
}

/// One plane of a copy, in bytes.
struct PlaneCopy {
    int plane;
    int64_t toOffset, fromOffset; ///< of the first byte copied
    int bytes;                    ///< in a row
    int rows;
};

/// Rectangles that pass the right edge run on into the next row; past the plane's last byte nothing is
/// copied.
void copyPlane(Offscreen *destination, const Offscreen *source, const PlaneCopy &copy) {
    const int64_t toEnd = offscreenPlaneSize(*destination, copy.plane);
    const int64_t fromEnd = offscreenPlaneSize(*source, copy.plane);
    int64_t to = copy.toOffset;
    int64_t from = copy.fromOffset;
    for (int row = 0; row < copy.rows; row++) {
        const int64_t bytes = std::min({int64_t{copy.bytes}, toEnd - to, fromEnd - from});
        if (bytes > 0)
            std::copy_n(source->ppu8Plane[copy.plane] + from, bytes, destination->ppu8Plane[copy.plane] + to);
        to += destination->pi32Pitch[copy.plane];
        from += source->pi32Pitch[copy.plane];
    }
}

} // namespace

HdrStatus offscreenInit(Offscreen *record, int width, int height, uint32_t format, int planeHeights[3]) {
    if (!record)
        return HDR_ERR_PARAM;
    const Family family = familyOf(format);
    if (family == Family::unknown)
        return HDR_ERR_FORMAT;
    const Layout layout = layoutOf(family, width, height);
    record->u32PixelArrayFormat = format;
    record->i32Width = width;
    record->i32Height = height;
    std::copy(layout.pitch.begin(), layout.pitch.end(), record->pi32Pitch);
    record->pi32Pitch[3] = 0;
    if (planeHeights)
        std::copy(layout.height.begin(), layout.height.end(), planeHeights);
    return HDR_OK;
}

int64_t offscreenPlaneSize(const Offscreen &picture, int plane) {
    const Family family = familyOf(picture.u32PixelArrayFormat);
    const Layout layout = layoutOf(family, picture.i32Width, picture.i32Height);
    const size_t index = static_cast<size_t>(plane);
    int rowBytes = picture.i32Width;
    if (family == Family::packed3)
        rowBytes *= 3;
    else if (family == Family::packed4)
        rowBytes *= 4;
    else if (family == Family::packed422)
        rowBytes *= 2;
    else if (plane > 0 && (family == Family::planar420 || family == Family::planar422))
        rowBytes /= 2;
    return layout.height[index] > 0 ? int64_t{layout.height[index] - 1} * picture.pi32Pitch[plane] + rowBytes
                                    : 0;
}

HdrStatus offscreenAlloc(Offscreen **record, int width, int height, uint32_t format, MemContext *memory) {
    *record = nullptr;
    Offscreen *made = allocateZeroed<Offscreen>(memory, 1);
    if (!made)
        return HDR_ERR_NOMEM;
    int rows[3];
    uint8_t *block = nullptr;
    HdrStatus status = offscreenInit(made, width, height, format, rows);
    const auto bytesOf = [&](int plane) {
        return static_cast<uint32_t>(rows[plane]) * static_cast<uint32_t>(made->pi32Pitch[plane]);
    };
    if (status == HDR_OK) {
        block = allocateArray<uint8_t>(memory, bytesOf(0) + bytesOf(1) + bytesOf(2));
        if (!block)
            status = HDR_ERR_NOMEM;
    }
    if (status != HDR_OK) {
        engineFree(memory, made);
        return status;
    }
    made->ppu8Plane[0] = block;
    if (made->pi32Pitch[1] != 0)
        made->ppu8Plane[1] = block + bytesOf(0);
    if (made->pi32Pitch[2] != 0)
        made->ppu8Plane[2] = block + bytesOf(0) + bytesOf(1);
    *record = made;
    return HDR_OK;
}

HdrStatus offscreenAttach(Offscreen *record, int width, int height, uint32_t format, uint8_t *const planes[3],
                          const int pitches[3]) {
    if (!record)
        return HDR_ERR_PARAM;
    const HdrStatus status = offscreenInit(record, width, height, format, nullptr);
    if (status != HDR_OK)
        return status;
    for (int plane = 0; plane < 3; plane++) {
        const bool present = record->pi32Pitch[plane] != 0;
        record->ppu8Plane[plane] = present ? planes[plane] : nullptr;
        record->pi32Pitch[plane] = present ? pitches[plane] : 0;
    }
    record->ppu8Plane[3] = nullptr;
    return HDR_OK;
}

void offscreenFree(Offscreen **record, MemContext *memory) {
    if (!*record)
        return;
    engineFree(memory, (*record)->ppu8Plane[0]);
    engineFree(memory, *record);
    *record = nullptr;
}

HdrStatus offscreenClone(Offscreen **record, const Offscreen *source, MemContext *memory) {
    if (!source)
        return HDR_ERR_PARAM;
    const Rect whole = wholeOf(*source);
    return offscreenCloneRect(record, source, &whole, memory);
}

HdrStatus offscreenCloneRect(Offscreen **record, const Offscreen *source, const Rect *rectangle,
                             MemContext *memory) {
    if (!source || !rectangle)
        return HDR_ERR_PARAM;
    HdrStatus status = offscreenAlloc(record, rectangle->x1 - rectangle->x0, rectangle->y1 - rectangle->y0,
                                      source->u32PixelArrayFormat, memory);
    if (status == HDR_OK)
        status = offscreenCopy(*record, nullptr, source, rectangle);
    if (status != HDR_OK)
        offscreenFree(record, memory);
    return status;
}

HdrStatus offscreenCopy(Offscreen *destination, const Rect *destinationRectangle, const Offscreen *source,
                        const Rect *sourceRectangle) {
    CopyAreas areas;
    const HdrStatus status = checkCopy(destination, destinationRectangle, source, sourceRectangle, areas);
    if (status != HDR_OK)
        return status;
    const Rect &to = areas.to;
    const Rect &from = areas.from;
    const int width = areas.width();
    const int height = areas.height();
    const auto offset = [](const Offscreen &picture, int plane, int bytesX, int row) {
        return int64_t{picture.pi32Pitch[plane]} * row + bytesX;
    };
    /// Copies a plane whose rows and columns are the picture's, divided.
    const auto copy = [&](int plane, int bytesPerColumn, int columnDivisor, int rowDivisor, int bytes) {
        copyPlane(destination, source,
                  {plane,
                   offset(*destination, plane, to.x0 / columnDivisor * bytesPerColumn, to.y0 / rowDivisor),
                   offset(*source, plane, from.x0 / columnDivisor * bytesPerColumn, from.y0 / rowDivisor),
                   bytes, height / rowDivisor});
    };
    switch (familyOf(source->u32PixelArrayFormat)) {
    case Family::packed422:
        copy(0, 2, 1, 1, 2 * width);
        return HDR_OK;
    case Family::packed3:
        copy(0, 3, 1, 1, 3 * width);
        return HDR_OK;
    case Family::packed4:
        // The last quarter of a row stays as it was: the fourth byte of a pixel is filler.
        copy(0, 4, 1, 1, 3 * width);
        return HDR_OK;
    case Family::grey:
        copy(0, 1, 1, 1, width);
        return HDR_OK;
    case Family::semiPlanar420:
        copy(0, 1, 1, 1, width);
        copy(1, 1, 1, 2, width);
        return HDR_OK;
    case Family::semiPlanar422:
        copy(0, 1, 1, 1, width);
        copy(1, 1, 1, 1, width);
        return HDR_OK;
    case Family::planar420:
        copy(0, 1, 1, 1, width);
        // From an odd source row the first chroma plane starts half a pitch further on.
        copyPlane(destination, source,
                  {1, offset(*destination, 1, to.x0 / 2, to.y0 / 2),
                   int64_t{source->pi32Pitch[1]} * from.y0 / 2 + from.x0 / 2, width / 2, height / 2});
        copy(2, 1, 2, 2, width / 2);
        return HDR_OK;
    case Family::planarHalfHeight:
        copy(0, 1, 1, 1, width);
        copy(1, 1, 1, 2, width);
        copy(2, 1, 1, 2, width);
        return HDR_OK;
    case Family::planar422:
        copy(0, 1, 1, 1, width);
        copy(1, 1, 2, 1, width / 2);
        copy(2, 1, 2, 1, width / 2);
        return HDR_OK;
    case Family::planar444:
        for (int plane = 0; plane < 3; plane++)
            copy(plane, 1, 1, 1, width);
        return HDR_OK;
    case Family::unknown:
        break;
    }
    return HDR_ERR_FORMAT;
}

HdrStatus offscreenCopyAll(Offscreen *destination, const Offscreen *source) {
    return offscreenCopy(destination, nullptr, source, nullptr);
}

HdrStatus offscreenCopyPacked422(Offscreen *destination, const Rect *destinationRectangle,
                                 const Offscreen *source, const Rect *sourceRectangle) {
    CopyAreas areas;
    const HdrStatus status = checkCopy(destination, destinationRectangle, source, sourceRectangle, areas);
    if (status != HDR_OK)
        return status;
    if (source->u32PixelArrayFormat < 0x501 || source->u32PixelArrayFormat > 0x504)
        return HDR_ERR_FORMAT;
    if (((areas.to.x0 ^ areas.from.x0) & 1) == 0)
        return offscreenCopy(destination, destinationRectangle, source, sourceRectangle);

    const int64_t toEnd = offscreenPlaneSize(*destination, 0);
    const int64_t fromEnd = offscreenPlaneSize(*source, 0);
    for (int y = 0; y < areas.height(); y++) {
        const int64_t to = int64_t{destination->pi32Pitch[0]} * (areas.to.y0 + y);
        const int64_t from = int64_t{source->pi32Pitch[0]} * (areas.from.y0 + y);
        for (int x = 0; x < areas.width(); x++) {
            const int toX = areas.to.x0 + x;
            const int fromX = areas.from.x0 + x;
            // The chroma kind of the destination's position, from the group that holds the source pixel.
            const int chromaX = roundDown(fromX, 2) + (toX & 1);
            const int64_t toLuma = to + 2 * toX;
            const int64_t toChroma = to + 2 * toX + 1;
            const int64_t fromLuma = from + 2 * fromX;
            const int64_t fromChroma = from + 2 * chromaX + 1;
            if (toLuma < toEnd && fromLuma < fromEnd)
                destination->ppu8Plane[0][toLuma] = source->ppu8Plane[0][fromLuma];
            if (toChroma < toEnd && fromChroma < fromEnd)
                destination->ppu8Plane[0][toChroma] = source->ppu8Plane[0][fromChroma];
        }
    }
    return HDR_OK;
}

} // namespace hdr
