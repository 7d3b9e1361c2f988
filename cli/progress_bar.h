// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace tristop {

/// A bar of the merge's progress on standard error; it leaves an empty line when it goes.
class ProgressBar {
public:
    /// Without `visible`, or when standard error is no terminal, nothing is ever drawn.
    explicit ProgressBar(bool visible);
    ~ProgressBar();
    ProgressBar(const ProgressBar &) = delete;
    ProgressBar &operator=(const ProgressBar &) = delete;

    void show(int64_t percentage);

private:
    bool visible;
};

} // namespace tristop
