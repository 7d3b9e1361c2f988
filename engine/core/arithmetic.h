// SPDX-License-Identifier: MIT
// Integer helpers that make rounding directions and saturation visible.
#pragma once

#include <algorithm>
#include <cstdint>

namespace hdr {

/// Saturates to 0..255.
constexpr int clamp8(int value) {
    return std::clamp(value, 0, 255);
}

/// Saturates to 0..4095.
constexpr int clamp12(int value) {
    return std::clamp(value, 0, 4095);
}

/// `value` rounded toward minus infinity to a multiple of `step`, a power of two.
constexpr int roundDown(int value, int step) {
    return value & ~(step - 1);
}

/// `value` raised to a multiple of 4.
constexpr int pad4(int value) {
    return roundDown(value + 3, 4);
}

/// ceil(value / step) for value >= 0 and step > 0.
constexpr int ceilDivide(int value, int step) {
    return (value + step - 1) / step;
}

/// The low 16 bits of a value as a signed number: the wrap of a 16-bit store.
constexpr int16_t wrap16(int value) {
    return static_cast<int16_t>(static_cast<uint16_t>(value));
}

} // namespace hdr
