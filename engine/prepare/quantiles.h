// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace hdr {

/// Finds the levels below which 1/steps, 2/steps, … of `count` samples lie, in one scan of a 256-bin
/// histogram: levels[k], k = 1 to steps, is the bin whose count takes the running sum to k count / steps.
/// Every quantile takes at least one bin of its own, so the levels rise until they reach 255; those that the
/// histogram does not reach are 255. levels[0] is left alone. `count` times `steps` fits 32 bits.
void findQuantiles(const uint32_t *histogram, uint32_t count, int steps, int *levels);

} // namespace hdr
