// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/arena.h"

#include <gtest/gtest.h>

namespace hdr::test {

/// Runs stage(memory) in arenas that grow by `step` bytes (a multiple of 8) until it succeeds. Before that it
/// may only want for memory, and it frees all that it allocates. How often it failed.
template <typename Stage>
size_t countFailures(size_t step, Stage stage) {
    constexpr size_t kPlenty = 1 << 24;
    for (size_t failures = 0; failures * step < kPlenty; failures++) {
        Arena arena((failures + 1) * step);
        const HdrStatus status = stage(arena.memory());
        EXPECT_TRUE(arena.isEmpty()) << "after " << failures << " failures";
        if (status == HDR_OK)
            return failures;
        EXPECT_EQ(status, HDR_ERR_NOMEM);
    }
    ADD_FAILURE() << "never succeeds";
    return 0;
}

} // namespace hdr::test
