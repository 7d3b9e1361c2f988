// SPDX-License-Identifier: MIT
// The state of a run between its stages: a context with reduced pictures, weights, masks and maps of any
// content.
#pragma once

#include "engine/core/arithmetic.h"
#include "engine/core/context.h"
#include "engine/core/memory.h"
#include "engine/core/plane.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <random>
#include <vector>

namespace hdr::test {

/// Owns what the analysis and colour stages read and write, in a picture of width x height reduced pixels.
/// The inputs' order is dark 2, middle 0, bright 1, so that no index stands for another by chance. Everything
/// is zero until it is filled.
class ReducedRun {
public:
    static constexpr int kMid = 0, kBright = 1, kDark = 2;

    ReducedRun(int width, int height, MemContext *memory = nullptr)
        : width(width), height(height), memory(memory) {
        Preparation &preparation = context.preparation;
        context.imageCount = 3;
        preparation.midIndex = kMid;
        preparation.brightIndex = kBright;
        preparation.darkIndex = kDark;
        preparation.gridColumns = ceilDivide(width, 4);
        preparation.gridRows = ceilDivide(height, 4);
        preparation.gridWidth = preparation.gridColumns + 2;
        preparation.gridHeight = preparation.gridRows + 2;
        std::fill_n(preparation.exposureEstimate, 3, 1.0);

        const size_t cells = preparation.gridPlaneSize();
        complete = context.tables.create(memory) == HDR_OK;
        allocate(preparation.gridStats, kGridPlaneCount * cells);
        for (int i = 0; i < 3; i++) {
            allocate(preparation.statistics[i], 3 * kBins);
            makePicture(preparation.workImages[i]);
            makePicture(preparation.registeredImages[i]);
        }
        makePicture(preparation.mergedImage);
        makePicture(preparation.toneImage);
        ChromaWeights &chroma = context.chromaWeights;
        for (int16_t **plane : {&chroma.chromaWeightDark, &chroma.chromaWeightBright, &chroma.chromaWeightMid,
                                &chroma.detailMask})
            allocate(*plane, pixels());
        ExposureWeights &weights = context.weights;
        allocate(weights.lumaWeightMid, 5 * cells);
        if (complete) {
            weights.lumaWeightDark = weights.lumaWeightMid + cells;
            weights.lumaWeightBright = weights.lumaWeightMid + 2 * cells;
            uint8_t *masks = reinterpret_cast<uint8_t *>(weights.lumaWeightMid + 3 * cells);
            weights.ghostMaskB = masks;
            weights.ghostMaskA = masks + cells;
            weights.ghostMaskC = masks + 2 * cells;
            weights.ghostMaskD = masks + 3 * cells;
        }
    }
    ReducedRun(const ReducedRun &) = delete;
    ReducedRun &operator=(const ReducedRun &) = delete;
    ~ReducedRun() {
        context.preparation.release(memory);
        context.chromaWeights.release(memory);
        context.weights.release(memory);
        context.firstMerge.release(memory);
        context.localToneMap.release(memory);
        context.tables.release(memory);
    }

    /// Makes the nine correction maps, zero.
    void makeMaps() {
        FirstMerge &merge = context.firstMerge;
        merge.mapWidth = width;
        merge.mapHeight = height;
        const size_t samples = static_cast<size_t>(width + 2) * static_cast<size_t>(height + 2);
        for (int first = 0; first < kCorrectionMapCount; first += 3) {
            allocate(merge.correctionMaps[first], 3 * samples);
            for (int i = 1; complete && i < 3; i++)
                merge.correctionMaps[first + i] =
                    merge.correctionMaps[first] + static_cast<size_t>(i) * samples;
        }
    }

    size_t pixels() const { return static_cast<size_t>(width) * static_cast<size_t>(height); }
    size_t cells() const { return context.preparation.gridPlaneSize(); }
    /// The ghost masks A, B, C and D.
    std::array<uint8_t *, 4> ghostMasks() const {
        const ExposureWeights &weights = context.weights;
        return {weights.ghostMaskA, weights.ghostMaskB, weights.ghostMaskC, weights.ghostMaskD};
    }
    Offscreen &work(int input) { return *context.preparation.workImages[input]; }
    Offscreen &registered(int input) { return *context.preparation.registeredImages[input]; }

    /// A map's samples, without the room for its frame.
    std::vector<int16_t> packed(const int16_t *map) const {
        return std::vector<int16_t>(map, map + pixels());
    }

    /// One colour everywhere.
    static void paint(Offscreen &picture, int y, int u, int v) {
        const std::array<int, 3> colour = {y, u, v};
        for (int plane = 0; plane < 3; plane++)
            for (int row = 0; row < picture.i32Height; row++)
                std::fill_n(planeOf(picture, plane).row(row), picture.i32Width,
                            static_cast<uint8_t>(colour[static_cast<size_t>(plane)]));
    }
    void paintNoise(Offscreen &picture, int lowest = 0, int highest = 255) {
        for (int plane = 0; plane < 3; plane++)
            for (int row = 0; row < picture.i32Height; row++)
                fillRandom(planeOf(picture, plane).row(row), static_cast<size_t>(picture.i32Width), lowest,
                           highest);
    }
    template <typename Sample>
    void fillRandom(Sample *samples, size_t count, int lowest, int highest) {
        std::uniform_int_distribution<int> value(lowest, highest);
        std::generate_n(samples, count, [&] { return static_cast<Sample>(value(random)); });
    }
    /// Cells of 0, of 255 and of values between.
    void fillRandomMask(uint8_t *mask) {
        std::uniform_int_distribution<int> value(-200, 400);
        std::generate_n(mask, context.preparation.gridPlaneSize(),
                        [&] { return static_cast<uint8_t>(clamp8(value(random))); });
    }
    /// Counts the working pictures' luminance into the inputs' histograms.
    void countHistograms() {
        for (int input = 0; input < 3; input++) {
            uint32_t *counts = context.preparation.histogram(input, 0);
            std::fill_n(counts, kBins, 0u);
            for (int row = 0; row < height; row++)
                for (int x = 0; x < width; x++)
                    counts[planeOf(work(input))(x, row)]++;
        }
    }

    int width, height;
    MemContext *memory;
    bool complete = true; ///< whether every allocation succeeded
    HdrContext context{};
    std::mt19937 random{1};

private:
    template <typename Sample>
    void allocate(Sample *&array, size_t count) {
        array = allocateZeroed<Sample>(memory, count);
        complete &= array != nullptr;
    }
    void makePicture(Offscreen *&picture) {
        if (offscreenAlloc(&picture, width, height, HDR_FORMAT_YUV444, memory) == HDR_OK)
            paint(*picture, 0, 0, 0);
        else
            complete = false;
    }
};

/// Every sample of a plane, row after row, without the padding.
template <typename Sample>
std::vector<Sample> samplesOf(Plane<Sample> plane) {
    std::vector<Sample> samples;
    for (int y = 0; y < plane.height; y++)
        samples.insert(samples.end(), plane.row(y), plane.row(y) + plane.width);
    return samples;
}

} // namespace hdr::test
