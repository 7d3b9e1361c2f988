// SPDX-License-Identifier: MIT
#include "engine/core/context.h"

namespace hdr {

HdrStatus hdrReleaseRunBuffers(MemContext *memory, HdrContext *context) {
    if (!context)
        return HDR_ERR_NOMEM;
    releaseFeatureGrid(memory, context);
    context->alignment.release(memory);
    context->preparation.release(memory);
    context->check.release(memory);
    context->chromaWeights.release(memory);
    context->weights.release(memory);
    context->firstMerge.release(memory);
    context->merge.release(memory);
    context->localToneMap.release(memory);
    context->lineBuffers.release(memory);
    context->bands.release(memory);
    return HDR_OK;
}

} // namespace hdr
