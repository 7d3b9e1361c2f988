// SPDX-License-Identifier: MIT
#include "engine/render/render_setup.h"

#include "engine/core/arithmetic.h"
#include "engine/core/context.h"
#include "engine/render/merge_tables.h"
#include "engine/render/tone_tables.h"

#include <algorithm>

namespace hdr {

namespace {

/// The pixels that have a source in input `index`: its shift cuts away one side of the picture, and so do the
/// outermost nodes of its warp grids.
Rect validPixels(const Alignment &alignment, int index, int width, int height) {
    const int dx = alignment.globalShift[index][0];
    const int dy = alignment.globalShift[index][1];
    Rect valid = {0, 0, width, height};
    const auto cutColumns = [&](int first, int last) {
        valid.x0 = std::max(valid.x0, first);
        valid.x1 = std::min(valid.x1, width + std::min(last, 0));
    };
    const auto cutRows = [&](int first, int last) {
        valid.y0 = std::max(valid.y0, first);
        valid.y1 = std::min(valid.y1, height + std::min(last, 0));
    };
    cutColumns(dx, dx);
    cutRows(dy, dy);

    const int32_t *x = alignment.warpX[index];
    const int32_t *y = alignment.warpY[index];
    if (!x || !y)
        return valid;
    const int columns = alignment.warpWidth;
    const int rows = alignment.warpHeight;
    for (int r = 0; r < rows; r++)
        cutColumns(x[r * columns] + dx, x[r * columns + columns - 1] + dx);
    for (int c = 0; c < columns; c++)
        cutRows(y[c] + dy, y[(rows - 1) * columns + c] + dy);
    return valid;
}

} // namespace

void compute_crop(HdrContext *context, int count, int width, int height) {
    RenderSetup &setup = context->render;
    setup.workingRectangle = {0, 0, roundDown(width, 8), roundDown(height, 2)};
    if (context->earlyExitCode != HDR_OK) {
        setup.validRectangle = setup.workingRectangle;
        setup.outputCrop = {0, 0, width, height};
        return;
    }

    Rect valid = count > 0 ? Rect{0, 0, width, height} : Rect{};
    for (int k = 0; k < count; k++) {
        const Rect input = validPixels(context->alignment, k, width, height);
        valid = {std::max(valid.x0, input.x0), std::max(valid.y0, input.y0), std::min(valid.x1, input.x1),
                 std::min(valid.y1, input.y1)};
    }
    const int x0 = pad4(valid.x0);
    const int y0 = pad4(valid.y0);
    setup.validRectangle = {x0, y0, roundDown(roundDown(valid.x1, 4) - x0, 8), roundDown(valid.y1, 4) - y0};
    setup.outputCrop = {roundDown(x0 + 15, 16), roundDown(y0 + 15, 16), roundDown(valid.x1, 16),
                        roundDown(valid.y1, 16)};
}

HdrStatus render_setup(MemContext *memory, HdrContext *context, const Offscreen *inputs, int count,
                       Offscreen *outputs, int outputIndex) {
    compute_crop(context, count, inputs[0].i32Width, inputs[0].i32Height);
    const HdrStatus status = prepare_merge(memory, context, outputs, outputIndex);
    if (status != HDR_OK)
        return status;
    return build_render_tables(memory, context, &outputs[outputIndex]);
}

} // namespace hdr
