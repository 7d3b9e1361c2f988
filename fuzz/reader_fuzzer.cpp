// SPDX-License-Identifier: GPL-3.0-or-later
// Any bytes for a photograph file: an upright picture and engine inputs come out, or a reason.
#include <cstddef>
#include <cstdint>
#include <span>

#include "app/image_source.h"
#include "app/yuv_rgb.h"
#include "fuzz/require.h"

namespace {

using namespace tristop;
using fuzz::require;

void fillEngineInput(const CBImageSource &source, uint32_t format, const RgbImage &upright) {
    Offscreen input{format, roundUpTo4(upright.width), upright.height, {}, {}};
    CBYUVRGB::allocOffscreen(&input);
    require(source.image(source.orientation(), &input), "an engine input is filled");
    CBYUVRGB::releaseOffscreen(&input);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::span<const uint8_t> file(data, size);
    CBImageSource source;
    if (!source.load(file) || !source.decode(file)) {
        require(!source.failure().empty(), "a failure has its reason");
        require(source.image() == nullptr, "a failure leaves no picture");
        return 0;
    }
    const int orientation = source.orientation();
    const ImageSize told = source.imageSize(orientation);
    const auto upright = source.image(orientation);
    require(upright.has_value(), "a decoded picture can be turned upright");
    require(upright->width == told.width && upright->height == told.height, "it has the size that was told");
    fillEngineInput(source, HDR_FORMAT_YUY2, *upright);
    fillEngineInput(source, HDR_FORMAT_I420, *upright);
    return 0;
}
