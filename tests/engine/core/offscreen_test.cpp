// SPDX-License-Identifier: MIT
#include "engine/core/offscreen.h"
#include "engine/core/output_crop_resize.h"

#include "tests/support/arena.h"
#include "tests/support/picture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace hdr {
namespace {

using test::Picture;

/// How a format's planes lie: bytes a column, and columns and rows of the picture to one of the plane.
struct PlaneShape {
    int bytes, columns, rows;
};
struct FormatCase {
    uint32_t format;
    std::array<int, 3> pitch, rows; ///< of 9 x 5 pixels
    std::vector<PlaneShape> planes;
};
const FormatCase kFormats[] = {
    {0x301, {28, 0, 0}, {5, 0, 0}, {{3, 1, 1}}},
    {0x302, {36, 0, 0}, {5, 0, 0}, {{4, 1, 1}}},
    {0x404, {28, 0, 0}, {5, 0, 0}, {{3, 1, 1}}},
    {0x501, {20, 0, 0}, {5, 0, 0}, {{2, 1, 1}}},
    {0x601, {12, 4, 4}, {5, 2, 2}, {{1, 1, 1}, {1, 2, 2}, {1, 2, 2}}},
    {0x606, {12, 12, 12}, {5, 2, 2}, {{1, 1, 1}, {1, 1, 2}, {1, 1, 2}}},
    {0x603, {12, 4, 4}, {5, 5, 5}, {{1, 1, 1}, {1, 2, 1}, {1, 2, 1}}},
    {0x604, {12, 12, 12}, {5, 5, 5}, {{1, 1, 1}, {1, 1, 1}, {1, 1, 1}}},
    {0x701, {12, 0, 0}, {5, 0, 0}, {{1, 1, 1}}},
    {0x802, {12, 12, 0}, {5, 2, 0}, {{1, 1, 1}, {1, 1, 2}}},
    {0x803, {12, 12, 0}, {5, 5, 0}, {{1, 1, 1}, {1, 1, 1}}},
};

TEST(OffscreenInit, PitchesAndPlaneHeights) {
    for (const FormatCase &c : kFormats) {
        Offscreen record{};
        std::array<int, 3> rows;
        ASSERT_EQ(offscreenInit(&record, 9, 5, c.format, rows.data()), HDR_OK);
        EXPECT_TRUE(std::equal(c.pitch.begin(), c.pitch.end(), record.pi32Pitch)) << std::hex << c.format;
        EXPECT_EQ(rows, c.rows) << std::hex << c.format;
    }
    for (uint32_t format : {0x300u, 0x305u, 0x400u, 0x405u, 0x500u, 0x509u, 0x609u, 0x702u, 0x804u, 0u}) {
        Offscreen record{};
        record.i32Width = 99;
        EXPECT_EQ(offscreenInit(&record, 7, 5, format, nullptr), HDR_ERR_FORMAT);
        EXPECT_EQ(record.i32Width, 99) << "an unknown format leaves the record alone";
        Offscreen *made = &record;
        test::Arena arena(992);
        EXPECT_EQ(offscreenAlloc(&made, 7, 5, format, arena.memory()), HDR_ERR_FORMAT);
        EXPECT_EQ(made, nullptr);
        EXPECT_TRUE(arena.isEmpty());
    }
    EXPECT_EQ(offscreenInit(nullptr, 7, 5, 0x501, nullptr), HDR_ERR_PARAM);
}

/// What a copy of a part makes of a picture's planes.
void expectCopied(const FormatCase &c, const Picture &made, const Picture &before, const Rect &to,
                  const Offscreen &source, const Rect &from) {
    for (size_t plane = 0; plane < c.planes.size(); plane++) {
        const auto &[bytes, columns, rows] = c.planes[plane];
        // The fourth byte of a pixel is filler: the last quarter of a row stays.
        const int rowBytes = (to.x1 - to.x0) / columns * std::min(bytes, 3);
        std::vector<uint8_t> expected = before.planes[plane];
        for (int y = 0; y < (to.y1 - to.y0) / rows; y++) {
            int at = (from.y0 / rows + y) * source.pi32Pitch[plane];
            if (c.format == 0x601 && plane == 1)
                at += from.y0 % 2 * source.pi32Pitch[plane] / 2; // half a pitch further on from an odd row
            std::copy_n(source.ppu8Plane[plane] + at + from.x0 / columns * bytes, rowBytes,
                        &expected[static_cast<size_t>((to.y0 / rows + y) * made.record.pi32Pitch[plane] +
                                                      to.x0 / columns * bytes)]);
        }
        EXPECT_EQ(made.planes[plane], expected) << std::hex << c.format << " plane " << plane;
    }
}

TEST(OffscreenCopy, PartOfEveryPlane) {
    for (const FormatCase &c : kFormats)
        for (const auto &[to, from] : {std::pair{Rect{4, 2, 10, 8}, Rect{2, 4, 8, 10}},
                                       {Rect{0, 0, 8, 4}, Rect{0, 3, 8, 7}},
                                       {Rect{0, 0, 16, 12}, Rect{0, 0, 16, 12}}}) {
            const Picture source(c.format, 16, 12, test::noise(1)), before(c.format, 16, 12, test::noise(2));
            Picture made(c.format, 16, 12, test::noise(2));
            ASSERT_EQ(offscreenCopy(&made.record, &to, &source.record, &from), HDR_OK);
            expectCopied(c, made, before, to, source.record, from);

            Offscreen *part = nullptr;
            ASSERT_EQ(offscreenCloneRect(&part, &source.record, &from, nullptr), HDR_OK);
            EXPECT_EQ(part->u32PixelArrayFormat, c.format);
            const int width = from.x1 - from.x0, height = from.y1 - from.y0;
            Picture copy(c.format, width, height, test::noise(3));
            const Picture noise(c.format, width, height, test::noise(3));
            ASSERT_EQ(offscreenCopyAll(&copy.record, part), HDR_OK);
            expectCopied(c, copy, noise, {0, 0, width, height}, source.record, from);
            offscreenFree(&part, nullptr);
            EXPECT_EQ(part, nullptr);
        }
}

TEST(OffscreenCopy, RectanglesAreChecked) {
    const Picture a(0x501, 16, 12, test::noise(3));
    const Picture other(0x601, 16, 12, test::noise(3));
    Picture b(0x501, 16, 12, [] { return uint8_t{0}; });
    const Rect negative = {-1, 0, 3, 4}, inverted = {4, 0, 3, 4}, wide = {0, 0, 17, 4};
    const Rect narrow = {0, 0, 4, 4}, tall = {0, 0, 4, 5};
    for (const Rect &bad : {negative, inverted, wide})
        EXPECT_EQ(offscreenCopy(&b.record, &bad, &a.record, &bad), HDR_ERR_PARAM);
    EXPECT_EQ(offscreenCopy(&b.record, &narrow, &a.record, &tall), HDR_ERR_PARAM);
    EXPECT_EQ(offscreenCopyAll(&b.record, &other.record), HDR_ERR_PARAM);
    EXPECT_EQ(offscreenCopyAll(nullptr, &a.record), HDR_ERR_PARAM);
    Offscreen *cloned = nullptr;
    test::Arena arena(992);
    EXPECT_EQ(offscreenCloneRect(&cloned, &a.record, &wide, arena.memory()), HDR_ERR_PARAM);
    EXPECT_EQ(cloned, nullptr);
    EXPECT_TRUE(arena.isEmpty());
    // A rectangle of the picture's own size passes wherever it starts; the copy ends with the plane.
    const Rect beyond = {10, 0, 26, 12};
    EXPECT_EQ(offscreenCopy(&b.record, nullptr, &a.record, &beyond), HDR_OK);
    EXPECT_TRUE(std::equal(a.planes[0].begin() + 20, a.planes[0].end(), b.planes[0].begin()))
        << "it runs on into the next row";
    EXPECT_EQ(b.planes[0][11 * 32 + 12], 0);
    EXPECT_EQ(offscreenCopy(&b.record, &beyond, &a.record, nullptr), HDR_OK);
}

TEST(OffscreenCopyPacked422, ChromaKeepsItsPlaces) {
    const Picture source(0x501, 16, 4, test::noise(5));
    Picture made(0x501, 16, 4, test::noise(6));
    const Rect from = {3, 0, 8, 2}, to = {4, 1, 9, 3};
    std::vector<uint8_t> expected = made.planes[0];
    for (size_t y = 0; y < 2; y++)
        for (size_t x = 0; x < 5; x++) {
            uint8_t *pixel = &expected[32 * (1 + y) + 2 * (4 + x)];
            pixel[0] = source.planes[0][32 * y + 2 * (3 + x)];
            pixel[1] = source.planes[0][32 * y + (3 + x) / 2 * 4 + x % 2 * 2 + 1];
        }
    ASSERT_EQ(offscreenCopyPacked422(&made.record, &to, &source.record, &from), HDR_OK);
    EXPECT_EQ(made.planes[0], expected);
    Picture planar(0x601, 16, 4, test::noise(7));
    EXPECT_EQ(offscreenCopyPacked422(&planar.record, nullptr, &planar.record, nullptr), HDR_ERR_FORMAT);
}

/// Where output position i lies in the crop: the source index at or before it, and sixteenths to the next.
struct Tap {
    int near, far, weight;

    Tap(int i, int size, int first, int end) {
        const float position =
            static_cast<float>(i * int64_t{end - first - 1}) / static_cast<float>(size - 1) +
            static_cast<float>(first);
        near = static_cast<int>(position);
        far = std::min(near + 1, size - 1);
        weight = static_cast<int>(static_cast<double>((position - static_cast<float>(near)) * 16) + 0.5);
    }
};

/// Byte `byte` of row y of a plane of the crop stretched over the picture: bilinear luminance, nearest
/// chroma.
int stretched(const Offscreen &picture, const Rect &crop, int plane, int byte, int y) {
    const int width = picture.i32Width, height = picture.i32Height;
    const uint32_t format = picture.u32PixelArrayFormat;
    const auto at = [&](int column, int row) {
        return int{picture.ppu8Plane[plane][row * picture.pi32Pitch[plane] + column]};
    };
    const int step = format == 0x501 ? 2 : 1;
    if (plane == 0 && byte % step == 0) {
        const Tap column(byte / step, width, crop.x0, crop.x1), row(y, height, crop.y0, crop.y1);
        const auto between = [&](int x) {
            return 16 * at(step * x, row.near) +
                   (at(step * x, row.far) - at(step * x, row.near)) * row.weight;
        };
        return (16 * between(column.near) + (between(column.far) - between(column.near)) * column.weight) /
               256;
    }
    // A pair takes the chroma of the source pair that holds its left column, two rows of 4:2:0 that of their
    // second one.
    const bool halfHeight = format != 0x501 && format != 0x803;
    const int row = Tap(halfHeight ? 2 * y + 1 : y, height, crop.y0, crop.y1).near / (halfHeight ? 2 : 1);
    const int bytesInPair = format == 0x501 ? 4 : format == 0x601 ? 1 : 2;
    const int pair = Tap(byte / bytesInPair * 2, width, crop.x0, crop.x1).near / 2;
    return at(pair * bytesInPair + byte % bytesInPair, row);
}

TEST(OutputCropResize, StretchesTheCropOverThePicture) {
    // Of 96 x 64 pixels the right side is cut, in multiples of 8, of 63 x 90 the bottom, in multiples of 2;
    // the very wide picture's positions exceed 32 bits.
    for (uint32_t format : {0x501u, 0x601u, 0x801u, 0x802u, 0x803u})
        for (const auto &[width, height, wanted, x1, y1] :
             {std::tuple{122, 90, Rect{16, 16, 112, 80}, 16 + 80, 80},
              {122, 91, {16, 27, 112, 91}, 16 + 80, 91},
              {122, 122, {59, 16, 122, 106}, 122, 16 + 62},
              {50004, 8, {0, 0, 49984, 8}, 49984, 6}}) {
            SCOPED_TRACE(testing::Message()
                         << std::hex << format << std::dec << ' ' << width << " x " << height);
            const Picture source(format, width, height, test::noise(format));
            Picture made(format, width, height, [] { return uint8_t{0}; });
            Rect crop = wanted;
            ASSERT_EQ(outputCropResize(nullptr, &source.record, &made.record, &crop), HDR_OK);
            EXPECT_EQ(crop.x1, x1);
            EXPECT_EQ(crop.y1, y1);
            for (int plane = 0; plane < 3 && made.record.ppu8Plane[plane]; plane++) {
                const int pitch = made.record.pi32Pitch[plane];
                const auto &samples = made.planes[static_cast<size_t>(plane)];
                const int rowBytes = format == 0x501            ? 2 * width
                                     : format == 0x601 && plane ? width / 2
                                                                : width;
                for (int y = 0; y < static_cast<int>(samples.size()) / pitch; y++)
                    for (int byte = 0; byte < rowBytes; byte++)
                        ASSERT_EQ(samples[static_cast<size_t>(y * pitch + byte)],
                                  stretched(source.record, crop, plane, byte, y))
                            << "plane " << plane << " byte " << byte << " row " << y;
            }
        }
}

TEST(OutputCropResize, WholePictureAndEmptyCropAreCopies) {
    const Picture source(0x501, 64, 48, test::noise(8));
    const Rect crops[] = {{0, 0, 64, 48}, {-20, -3, 70, 99}, {48, 0, 32, 48}, {0, 40, 64, 40}, {0, 0, 64, 2}};
    for (Rect crop : crops) {
        Picture made(0x501, 64, 48, [] { return uint8_t{0}; });
        ASSERT_EQ(outputCropResize(nullptr, &source.record, &made.record, &crop), HDR_OK);
        EXPECT_EQ(made.planes[0], source.planes[0]);
    }
}

TEST(OutputCropResize, OddPackedWidthStaysInsideThePicture) {
    // Exactly the bytes that the picture needs, so that a sanitizer sees every step outside.
    std::vector<uint8_t> from(2 * 101 * 100, 77), to(from.size());
    Offscreen source{0x501, 101, 100, {from.data()}, {202}}, made{0x501, 101, 100, {to.data()}, {202}};
    Rect crop = {16, 16, 96, 96};
    ASSERT_EQ(outputCropResize(nullptr, &source, &made, &crop), HDR_OK);
    EXPECT_EQ(to, from);
}

} // namespace
} // namespace hdr
