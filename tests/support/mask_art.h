// SPDX-License-Identifier: MIT
// Masks written as text: '#' is set (255), anything else clear (0).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace hdr::test {

inline std::vector<uint8_t> maskFrom(const std::vector<std::string_view> &rows) {
    std::vector<uint8_t> mask;
    for (std::string_view row : rows)
        for (char c : row)
            mask.push_back(c == '#' ? 255 : 0);
    return mask;
}

/// The same the other way round, one row a line, so that a failed comparison can be read.
inline std::string artFrom(const std::vector<uint8_t> &mask, size_t width) {
    std::string art;
    for (size_t i = 0; i < mask.size(); i++) {
        if (i % width == 0)
            art += '\n';
        art += mask[i] == 255 ? '#' : mask[i] == 0 ? '.' : '?';
    }
    return art;
}

} // namespace hdr::test
