// SPDX-License-Identifier: MIT
#include "engine/render/band_rows.h"

#include <initializer_list>

namespace hdr {

namespace {

/// Hands out one array of a block after the other; without a block it only counts.
class Divider {
public:
    explicit Divider(void *block) : block(static_cast<uint8_t *>(block)) {}

    template <typename T>
    void take(T *&array, size_t count) {
        constexpr size_t kAlignment = 16;
        array = block ? reinterpret_cast<T *>(block + used) : nullptr;
        used += (count * sizeof(T) + kAlignment - 1) / kAlignment * kAlignment;
    }
    size_t size() const { return used; }

private:
    uint8_t *block;
    size_t used = 0;
};

size_t divideInto(BandRows &rows, void *block, int width) {
    const auto columns = static_cast<size_t>(width);
    const size_t groups = columns / 4 + 1;
    const size_t runs = columns / 32 + 4;
    Divider divider(block);
    for (uint8_t **row : {&rows.reference, &rows.dark, &rows.bright})
        divider.take(*row, 2 * columns);
    for (int16_t **row : {&rows.weightMid, &rows.weightDark, &rows.weightBright})
        divider.take(*row, groups);
    for (RunList *list : {&rows.darkRuns, &rows.brightRuns})
        divider.take(list->columns, runs);
    divider.take(rows.spans, 2 * runs);
    for (uint16_t **row : {&rows.gain.current, &rows.gain.next, &rows.gain.previous})
        divider.take(*row, columns);
    return divider.size();
}

} // namespace

size_t BandRows::blockSize(int width) {
    BandRows rows{};
    return divideInto(rows, nullptr, width);
}

BandRows BandRows::divide(void *block, int width) {
    BandRows rows{};
    divideInto(rows, block, width);
    return rows;
}

} // namespace hdr
