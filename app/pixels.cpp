// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/pixels.h"

#include <sys/mman.h>
#include <unistd.h>

namespace tristop {
namespace {

/// Asks for few large pages in place of many small ones, each of which costs time when it is touched first.
/// What the system does of it is its own affair.
void preferLargePages(uint8_t *block, size_t bytes) {
    constexpr size_t kWorthwhile = size_t{4} << 20;
    if (block == nullptr || bytes < kWorthwhile)
        return;
    const auto page = static_cast<size_t>(::sysconf(_SC_PAGESIZE));
    const size_t before = (page - reinterpret_cast<uintptr_t>(block) % page) % page;
    ::madvise(block + before, (bytes - before) / page * page, MADV_HUGEPAGE);
}

} // namespace

PixelBuffer allocPixels(size_t bytes) {
    PixelBuffer block(static_cast<uint8_t *>(std::calloc(bytes > 0 ? bytes : 1, 1)));
    preferLargePages(block.get(), bytes);
    return block;
}

} // namespace tristop
