// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/progress_bar.h"

#include <algorithm>
#include <cstdio>
#include <string>

#include <unistd.h>

namespace tristop {

ProgressBar::ProgressBar(bool wanted) : visible(wanted && ::isatty(STDERR_FILENO) == 1) {
    show(0);
}

ProgressBar::~ProgressBar() {
    if (visible)
        std::fputs("\r\033[K", stderr);
}

void ProgressBar::show(int64_t percentage) {
    if (!visible)
        return;
    constexpr size_t kCells = 40;
    const auto filled = static_cast<size_t>(std::clamp<int64_t>(percentage, 0, 100)) * kCells / 100;
    const std::string bar = std::string(filled, '#') + std::string(kCells - filled, '.');
    std::fprintf(stderr, "\r[%s] %3d %%", bar.c_str(), static_cast<int>(percentage));
}

} // namespace tristop
