// SPDX-License-Identifier: MIT
#include "engine/analysis/plane_borders.h"

#include "engine/core/plane.h"

#include <algorithm>
#include <cassert>
#include <cstdint>

namespace hdr {
namespace {

template <typename Sample>
void padPlane(Plane<const Sample> source, Sample *destination) {
    const int width = source.width;
    const int height = source.height;
    const Plane<Sample> framed(destination, width + 2, height + 2);
    for (int y = 0; y < height; y++) {
        Sample *row = framed.row(y + 1);
        std::copy_n(source.row(y), width, row + 1);
        row[0] = row[1];
        row[width + 1] = row[width];
    }
    std::copy_n(framed.row(1), framed.width, framed.row(0));
    std::copy_n(framed.row(height), framed.width, framed.row(height + 1));
}

} // namespace

HdrStatus pad_plane_u16(const uint16_t *source, uint16_t *destination, int width, int height) {
    padPlane(Plane<const uint16_t>(source, width, height), destination);
    return HDR_OK;
}

HdrStatus pad_plane_u32(const uint32_t *source, uint32_t *destination, int width, int height) {
    padPlane(Plane<const uint32_t>(source, width, height), destination);
    return HDR_OK;
}

HdrStatus replicate_border_u8(uint8_t *plane, int width, int height) {
    assert(width >= 3 && height >= 3);
    const Plane<uint8_t> samples(plane, width, height);
    for (int y = 0; y < height; y++) {
        uint8_t *row = samples.row(y);
        row[0] = row[1];
        row[width - 2] = row[width - 1] = row[width - 3];
    }
    std::copy_n(samples.row(1), width, samples.row(0));
    std::copy_n(samples.row(height - 3), width, samples.row(height - 2));
    std::copy_n(samples.row(height - 3), width, samples.row(height - 1));
    return HDR_OK;
}

HdrStatus fill_border_u8(uint8_t *plane, int width, int height) {
    assert(width >= 3 && height >= 3);
    const Plane<uint8_t> samples(plane, width, height);
    for (int y = 0; y < height; y++) {
        uint8_t *row = samples.row(y);
        row[0] = row[width - 2] = row[width - 1] = 255;
    }
    for (int y : {0, height - 2, height - 1})
        std::fill_n(samples.row(y), width, uint8_t{255});
    return HDR_OK;
}

HdrStatus extend_rect_u8(uint8_t *plane, int width, int height, int pitch, int x0, int x1, int y0, int y1) {
    if (x0 >= x1 || y0 >= y1)
        return HDR_OK;
    assert(x0 >= 0 && x1 <= width && y0 >= 0 && y1 <= height);
    const Plane<uint8_t> samples(plane, width, height, pitch);
    for (int y = y0; y < y1; y++) {
        uint8_t *row = samples.row(y);
        std::fill(row, row + x0, row[x0]);
        std::fill(row + x1, row + width, row[x1 - 1]);
    }
    for (int y = 0; y < y0; y++)
        std::copy_n(samples.row(y0), width, samples.row(y));
    for (int y = y1; y < height; y++)
        std::copy_n(samples.row(y1 - 1), width, samples.row(y));
    return HDR_OK;
}

} // namespace hdr
