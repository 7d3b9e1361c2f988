// SPDX-License-Identifier: MIT
#include "engine/core/offscreen.h"
#include "engine/core/output_crop_resize.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <numeric>
#include <random>
#include <tuple>
#include <vector>

namespace hdr {
namespace {

struct Free {
    void operator()(Offscreen *record) const { offscreenFree(&record, nullptr); }
};
using Picture = std::unique_ptr<Offscreen, Free>;

Picture make(int width, int height, uint32_t format) {
    Offscreen *record = nullptr;
    EXPECT_EQ(offscreenAlloc(&record, width, height, format, nullptr), HDR_OK);
    return Picture(record);
}

int planeRows(const Offscreen &picture, int plane) {
    Offscreen copy{};
    int rows[3] = {};
    offscreenInit(&copy, picture.i32Width, picture.i32Height, picture.u32PixelArrayFormat, rows);
    return rows[plane];
}

void fillRandom(Offscreen &picture, unsigned seed) {
    std::minstd_rand random(seed);
    for (int plane = 0; plane < 3; plane++)
        for (int i = 0; i < planeRows(picture, plane) * picture.pi32Pitch[plane]; i++)
            picture.ppu8Plane[plane][i] = static_cast<uint8_t>(random() >> 8);
}

void fill(Offscreen &picture, int value) {
    for (int plane = 0; plane < 3; plane++)
        if (picture.ppu8Plane[plane])
            std::memset(picture.ppu8Plane[plane], value,
                        static_cast<size_t>(planeRows(picture, plane) * picture.pi32Pitch[plane]));
}

uint8_t at(const Offscreen &picture, int plane, int byte, int row) {
    return picture.ppu8Plane[plane][row * picture.pi32Pitch[plane] + byte];
}

TEST(OffscreenInit, PitchesAndPlaneHeights) {
    struct Case {
        uint32_t format;
        int pitch[3];
        int rows[3];
    };
    // 7 x 5 pixels.
    const Case cases[] = {
        {0x301, {24, 0, 0}, {5, 0, 0}}, {0x302, {28, 0, 0}, {5, 0, 0}}, {0x404, {24, 0, 0}, {5, 0, 0}},
        {0x501, {16, 0, 0}, {5, 0, 0}}, {0x601, {8, 4, 4}, {5, 2, 2}},  {0x606, {8, 8, 8}, {5, 2, 2}},
        {0x603, {8, 4, 4}, {5, 5, 5}},  {0x604, {8, 8, 8}, {5, 5, 5}},  {0x701, {8, 0, 0}, {5, 0, 0}},
        {0x802, {8, 8, 0}, {5, 2, 0}},  {0x803, {8, 8, 0}, {5, 5, 0}},
    };
    for (const Case &c : cases) {
        Offscreen record{};
        int rows[3];
        ASSERT_EQ(offscreenInit(&record, 7, 5, c.format, rows), HDR_OK);
        EXPECT_TRUE(std::equal(c.pitch, c.pitch + 3, record.pi32Pitch)) << std::hex << c.format;
        EXPECT_TRUE(std::equal(c.rows, c.rows + 3, rows)) << std::hex << c.format;
    }
    for (uint32_t format : {0x300u, 0x305u, 0x400u, 0x405u, 0x500u, 0x509u, 0x609u, 0x702u, 0x804u, 0u}) {
        Offscreen record{};
        record.i32Width = 99;
        EXPECT_EQ(offscreenInit(&record, 7, 5, format, nullptr), HDR_ERR_FORMAT);
        EXPECT_EQ(record.i32Width, 99) << "an unknown format leaves the record alone";
        Offscreen *made = &record;
        EXPECT_EQ(offscreenAlloc(&made, 7, 5, format, nullptr), HDR_ERR_FORMAT);
        EXPECT_EQ(made, nullptr);
    }
    EXPECT_EQ(offscreenInit(nullptr, 7, 5, 0x501, nullptr), HDR_ERR_PARAM);
}

TEST(OffscreenCopy, PartOfEveryPlane) {
    const Rect from = {2, 4, 8, 10};
    const Rect to = {4, 2, 10, 8};
    for (uint32_t format : {0x501u, 0x301u, 0x701u, 0x801u, 0x803u, 0x601u, 0x602u, 0x603u, 0x604u}) {
        Picture source = make(16, 12, format);
        Picture destination = make(16, 12, format);
        fillRandom(*source, format);
        fill(*destination, 0);
        ASSERT_EQ(offscreenCopy(destination.get(), &to, source.get(), &from), HDR_OK);
        // Luma of every copied pixel, and one chroma sample well inside.
        const int step = format == 0x501 ? 2 : format == 0x301 ? 3 : 1;
        for (int y = 0; y < 6; y++)
            for (int x = 0; x < 6; x++)
                ASSERT_EQ(at(*destination, 0, step * (4 + x), 2 + y), at(*source, 0, step * (2 + x), 4 + y));
        EXPECT_EQ(at(*destination, 0, step * 10, 2), 0);
        EXPECT_EQ(at(*destination, 0, step * 4, 8), 0);
        const bool halfWidth = format == 0x601 || format == 0x603;
        const bool halfHeight = format == 0x601 || format == 0x602 || format == 0x801;
        for (int plane = 1; plane < 3 && source->ppu8Plane[plane]; plane++) {
            const int dx = halfWidth ? 2 : 1;
            const int dy = halfHeight ? 2 : 1;
            EXPECT_EQ(at(*destination, plane, 6 / dx, 4 / dy), at(*source, plane, 4 / dx, 6 / dy));
            EXPECT_EQ(at(*destination, plane, 10 / dx, 4 / dy), 0);
        }
        Offscreen *cloned = nullptr;
        ASSERT_EQ(offscreenCloneRect(&cloned, source.get(), &from, nullptr), HDR_OK);
        const Picture part(cloned);
        EXPECT_EQ(std::tuple(part->u32PixelArrayFormat, part->i32Width, part->i32Height),
                  std::tuple(format, 6, 6));
        EXPECT_EQ(at(*part, 0, step * 5, 5), at(*source, 0, step * 7, 9));
        ASSERT_EQ(offscreenClone(&cloned, source.get(), nullptr), HDR_OK);
        const Picture whole(cloned);
        for (int plane = 0; plane < 3 && source->ppu8Plane[plane]; plane++)
            EXPECT_EQ(std::memcmp(whole->ppu8Plane[plane], source->ppu8Plane[plane],
                                  static_cast<size_t>(offscreenPlaneSize(*source, plane))),
                      0);
    }
}

TEST(OffscreenCopy, FillerOfFourBytePixelsStays) {
    Picture source = make(8, 4, 0x302);
    Picture destination = make(8, 4, 0x302);
    fill(*source, 9);
    fill(*destination, 0);
    ASSERT_EQ(offscreenCopyAll(destination.get(), source.get()), HDR_OK);
    for (int y = 0; y < 4; y++)
        for (int i = 0; i < 32; i++)
            EXPECT_EQ(at(*destination, 0, i, y), i < 24 ? 9 : 0);
}

TEST(OffscreenCopy, FirstChromaPlaneFromAnOddRow) {
    Picture source = make(8, 8, 0x601);
    Picture destination = make(8, 8, 0x601);
    fillRandom(*source, 1);
    const Rect from = {0, 3, 8, 7};
    const Rect to = {0, 0, 8, 4};
    ASSERT_EQ(offscreenCopy(destination.get(), &to, source.get(), &from), HDR_OK);
    EXPECT_EQ(at(*destination, 1, 0, 0), source->ppu8Plane[1][4 * 3 / 2]) << "half a pitch further on";
    EXPECT_EQ(at(*destination, 2, 0, 0), source->ppu8Plane[2][4]);
}

TEST(OffscreenCopy, RectanglesAreChecked) {
    Picture a = make(16, 12, 0x501);
    Picture b = make(16, 12, 0x501);
    Picture other = make(16, 12, 0x601);
    fillRandom(*a, 3);
    fill(*b, 0);
    const Rect negative = {-1, 0, 3, 4};
    const Rect inverted = {4, 0, 3, 4};
    const Rect wide = {0, 0, 17, 4};
    const Rect narrow = {0, 0, 4, 4};
    const Rect tall = {0, 0, 4, 5};
    for (const Rect &bad : {negative, inverted, wide})
        EXPECT_EQ(offscreenCopy(b.get(), &bad, a.get(), &bad), HDR_ERR_PARAM);
    EXPECT_EQ(offscreenCopy(b.get(), &narrow, a.get(), &tall), HDR_ERR_PARAM);
    EXPECT_EQ(offscreenCopy(b.get(), nullptr, other.get(), nullptr), HDR_ERR_PARAM);
    EXPECT_EQ(offscreenCopy(nullptr, nullptr, a.get(), nullptr), HDR_ERR_PARAM);
    Offscreen *cloned = nullptr;
    EXPECT_EQ(offscreenCloneRect(&cloned, a.get(), &wide, nullptr), HDR_ERR_PARAM);
    EXPECT_EQ(cloned, nullptr);
    // A rectangle of the picture's own size passes wherever it starts; the copy ends with the plane.
    const Rect beyond = {10, 0, 26, 12};
    EXPECT_EQ(offscreenCopy(b.get(), nullptr, a.get(), &beyond), HDR_OK);
    EXPECT_EQ(at(*b, 0, 0, 0), at(*a, 0, 20, 0));
    EXPECT_EQ(at(*b, 0, 31, 0), at(*a, 0, 19, 1)) << "it runs on into the next row";
    EXPECT_EQ(at(*b, 0, 12, 11), 0);
}

TEST(OffscreenCopyPacked422, ChromaKeepsItsPlaces) {
    Picture source = make(16, 4, 0x501);
    Picture destination = make(16, 4, 0x501);
    for (int y = 0; y < 4; y++)
        for (int x = 0; x < 16; x++) {
            source->ppu8Plane[0][y * 32 + 2 * x] = static_cast<uint8_t>(100 + x);
            source->ppu8Plane[0][y * 32 + 2 * x + 1] =
                static_cast<uint8_t>((x & 1 ? 200 : 20) + x / 2); // U of group g is 20 + g, V is 200 + g
        }
    fill(*destination, 0);
    const Rect from = {3, 0, 8, 2};
    const Rect to = {4, 1, 9, 3};
    ASSERT_EQ(offscreenCopyPacked422(destination.get(), &to, source.get(), &from), HDR_OK);
    for (int x = 0; x < 5; x++) {
        const int group = (3 + x) / 2;
        EXPECT_EQ(at(*destination, 0, 2 * (4 + x), 1), 103 + x);
        EXPECT_EQ(at(*destination, 0, 2 * (4 + x) + 1, 1), (x & 1 ? 200 : 20) + group) << x;
    }
    Picture planar = make(16, 4, 0x601);
    EXPECT_EQ(offscreenCopyPacked422(planar.get(), nullptr, planar.get(), nullptr), HDR_ERR_FORMAT);
}

/// The bilinear rule for one luminance sample, written from its formula.
int resized(const Offscreen &picture, const Rect &crop, int x, int y, int bytesPerSample) {
    const auto tap = [](int i, int size, int first, int end, int &near, int &far) {
        const float position = static_cast<float>(i * (end - first - 1)) / static_cast<float>(size - 1) +
                               static_cast<float>(first);
        near = static_cast<int>(position);
        far = near + 1 < size ? near + 1 : size - 1;
        return static_cast<int>(static_cast<double>((position - static_cast<float>(near)) * 16) + 0.5);
    };
    int left, right, top, bottom;
    const int fx = tap(x, picture.i32Width, crop.x0, crop.x1, left, right);
    const int fy = tap(y, picture.i32Height, crop.y0, crop.y1, top, bottom);
    const auto sample = [&](int row, int column) {
        return int{at(picture, 0, bytesPerSample * column, row)};
    };
    const int l = (sample(top, left) << 4) + (sample(bottom, left) - sample(top, left)) * fy;
    const int r = (sample(top, right) << 4) + (sample(bottom, right) - sample(top, right)) * fy;
    return ((l << 4) + (r - l) * fx) >> 8;
}

/// Source index at or before output position i, as in resized().
int nearest(int i, int size, int first, int end) {
    return static_cast<int>(static_cast<float>(i * (end - first - 1)) / static_cast<float>(size - 1) +
                            static_cast<float>(first));
}

TEST(OutputCropResize, StretchesTheCropOverThePicture) {
    for (uint32_t format : {0x501u, 0x601u, 0x801u, 0x802u, 0x803u}) {
        for (int height : {90, 91}) {
            Picture source = make(122, height, format);
            Picture destination = make(122, height, format);
            fillRandom(*source, format);
            fill(*destination, 0);
            Rect crop = {16, 16, 112, 80};
            ASSERT_EQ(outputCropResize(nullptr, source.get(), destination.get(), &crop), HDR_OK);
            // 96 x height is more than 64 x 122: 64 x 122 / height columns, in multiples of 8.
            EXPECT_EQ(crop.x1, 16 + ((64 * 122 / height) & ~7));
            EXPECT_EQ(crop.y1, 80);
            const int step = format == 0x501 ? 2 : 1;
            for (int y = 0; y < height; y++)
                for (int x = 0; x < 122; x++)
                    ASSERT_EQ(at(*destination, 0, step * x, y), resized(*source, crop, x, y, step))
                        << x << ',' << y;
            const auto column = [&](int x) { return nearest(x, 122, crop.x0, crop.x1); };
            const auto row = [&](int y) { return nearest(y, height, crop.y0, crop.y1); };
            const bool everyRow = format == 0x803;
            for (int y = 0; format == 0x501 && y < height; y++)
                for (int x = 0; x < 122; x++) // of the group that holds the left column
                    ASSERT_EQ(at(*destination, 0, 2 * x + 1, y),
                              at(*source, 0, column(x & ~1) / 2 * 4 + 1 + 2 * (x & 1), row(y)));
            for (int y = 0; format != 0x501 && y < (everyRow ? height : height / 2); y++)
                for (int x = 0; x < 61; x++) {
                    const int from = everyRow ? row(y) : row(2 * y + 1) / 2;
                    if (format == 0x601) {
                        ASSERT_EQ(at(*destination, 1, x, y), at(*source, 1, column(2 * x) / 2, from));
                        ASSERT_EQ(at(*destination, 2, x, y), at(*source, 2, column(2 * x) / 2, from));
                    } else {
                        ASSERT_EQ(at(*destination, 1, 2 * x, y), at(*source, 1, column(2 * x) & ~1, from));
                        ASSERT_EQ(at(*destination, 1, 2 * x + 1, y), at(*source, 1, column(2 * x) | 1, from));
                    }
                }
        }
    }
    // Too tall: 63 columns of a square picture want 63 rows, in multiples of 2.
    Picture source = make(122, 122, 0x501);
    Picture destination = make(122, 122, 0x501);
    fill(*source, 0);
    Rect crop = {16, 16, 79, 106};
    ASSERT_EQ(outputCropResize(nullptr, source.get(), destination.get(), &crop), HDR_OK);
    EXPECT_EQ(crop.x1, 79);
    EXPECT_EQ(crop.y1, 16 + 62);
}

TEST(OutputCropResize, VeryWidePictureKeepsItsEnd) {
    Picture source = make(50004, 8, 0x501);
    Picture destination = make(50004, 8, 0x501);
    fill(*source, 90);
    fill(*destination, 0);
    Rect crop = {0, 0, 49984, 8};
    ASSERT_EQ(outputCropResize(nullptr, source.get(), destination.get(), &crop), HDR_OK);
    EXPECT_EQ(at(*destination, 0, 2 * 50003, 4), 90);
    EXPECT_EQ(at(*destination, 0, 2 * 30000, 4), 90);
}

TEST(OutputCropResize, WholePictureAndEmptyCropAreCopies) {
    Picture source = make(64, 48, 0x501);
    fillRandom(*source, 8);
    const Rect crops[] = {{0, 0, 64, 48}, {-20, -3, 70, 99}, {48, 0, 32, 48}, {0, 40, 64, 40}, {0, 0, 64, 2}};
    for (Rect crop : crops) {
        Picture destination = make(64, 48, 0x501);
        fill(*destination, 0);
        ASSERT_EQ(outputCropResize(nullptr, source.get(), destination.get(), &crop), HDR_OK);
        EXPECT_EQ(std::memcmp(source->ppu8Plane[0], destination->ppu8Plane[0], 128 * 48), 0);
    }
}

TEST(OutputCropResize, OddPackedWidthStaysInsideThePicture) {
    // Exactly the bytes that the picture needs, so that a sanitizer sees every step outside.
    std::vector<uint8_t> from(2 * 101 * 100, 77);
    std::vector<uint8_t> to(from.size());
    Offscreen source{0x501, 101, 100, {from.data()}, {202}};
    Offscreen destination{0x501, 101, 100, {to.data()}, {202}};
    Rect crop = {16, 16, 96, 96};
    ASSERT_EQ(outputCropResize(nullptr, &source, &destination, &crop), HDR_OK);
    EXPECT_EQ(std::accumulate(to.begin(), to.end(), 0), 77 * 2 * 101 * 100);
}

} // namespace
} // namespace hdr
