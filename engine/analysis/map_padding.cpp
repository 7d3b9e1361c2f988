// SPDX-License-Identifier: MIT
#include "engine/analysis/map_padding.h"

#include "engine/analysis/plane_borders.h"
#include "engine/core/buffer.h"
#include "engine/core/context.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace hdr {
namespace {

/// Samples that a line buffer holds beyond the picture's width.
constexpr int kLineMargin = 64;

HdrStatus frameMaps(MemContext *memory, FirstMerge &maps) {
    Buffer<uint16_t> framed(memory,
                            static_cast<size_t>(maps.mapWidth + 2) * static_cast<size_t>(maps.mapHeight + 2));
    if (!framed)
        return HDR_ERR_NOMEM;
    for (int16_t *map : maps.correctionMaps) {
        // The frame copies bit patterns: the sign does not matter.
        uint16_t *samples = reinterpret_cast<uint16_t *>(map);
        pad_plane_u16(samples, framed.data(), maps.mapWidth, maps.mapHeight);
        std::copy(framed.begin(), framed.end(), samples);
    }
    return HDR_OK;
}

} // namespace

void BandLineBuffers::release(MemContext *memory) {
    for (int16_t *&storage : bandLineBuffers[0])
        releaseArray(memory, storage);
    *this = {};
}

HdrStatus band_buffer_stage(MemContext *memory, HdrContext *context) {
    if (const HdrStatus status = frameMaps(memory, context->firstMerge); status != HDR_OK)
        return status;
    auto &lines = context->lineBuffers.bandLineBuffers;
    const size_t length = static_cast<size_t>(context->preparation.sourceWidth + kLineMargin);
    for (size_t band = 0; band < std::size(lines[0]); band++) {
        int16_t *storage = allocateZeroed<int16_t>(memory, std::size(lines) * length);
        if (!storage)
            return HDR_ERR_NOMEM;
        for (auto &line : lines) {
            line[band] = storage;
            storage += length;
        }
    }
    return HDR_OK;
}

} // namespace hdr
