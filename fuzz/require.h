// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdio>
#include <cstdlib>

namespace tristop::fuzz {

/// Ends the program, which the fuzzer takes for a find, when a promise is broken.
inline void require(bool kept, const char *promise) {
    if (kept)
        return;
    std::fprintf(stderr, "broken promise: %s\n", promise);
    std::abort();
}

} // namespace tristop::fuzz
