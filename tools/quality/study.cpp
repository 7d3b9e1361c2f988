// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/quality/study.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numeric>

namespace tristop::quality {

namespace {

double alignmentTime(const HdrRunInfo &info) {
    const auto total =
        std::accumulate(std::begin(info.stepMicroseconds), std::end(info.stepMicroseconds), std::int64_t{0});
    return 100.0 *
           static_cast<double>(info.stepMicroseconds[HDR_STEP_ALIGN] +
                               info.stepMicroseconds[HDR_STEP_WEIGHTS]) /
           static_cast<double>(std::max<std::int64_t>(total, 1));
}

} // namespace

std::string Bars::atMost(double value, double limit, int decimals) {
    return mark(value, value <= limit, decimals);
}

std::string Bars::atLeast(double value, double limit, int decimals) {
    return mark(value, value >= limit, decimals);
}

std::string Bars::mark(double value, bool isMet, int decimals) {
    misses += !isMet;
    char text[32];
    std::snprintf(text, sizeof text, "%.*f%c", decimals, value, isMet ? ' ' : '!');
    return text;
}

void StaticTally::add(const MergeRun &run) {
    runs++;
    fallbacks += run.fellBack();
    worstMarked = std::max(worstMarked, 100 * run.markedShare());
}

MergeRun Study::run(const scene::SceneSettings &settings, int ghostLevel) {
    Bracket bracket(settings, views);
    MergeRun made = merge(bracket.pictures, ghostLevel);
    if (settings.width == sizes.back().size.width)
        alignmentTimes.push_back(alignmentTime(made.info));
    std::fprintf(
        stderr,
        "%d x %d scene %d seed %llu, +-%g stops, %.1f px, %.2f deg, %.1f %% moving, level %d: %.2f %% "
        "marked, excluded %d%d%d, fallback %d, %.1f %% of the time aligning\n",
        settings.width, settings.height, static_cast<int>(settings.variant),
        static_cast<unsigned long long>(settings.seed), settings.stops[kBright],
        std::hypot(settings.camera[kBright].shiftX, settings.camera[kBright].shiftY),
        settings.camera[kBright].rotationDegrees, 100 * settings.moving.share, ghostLevel,
        100 * made.markedShare(), made.info.excluded[0], made.info.excluded[1], made.info.excluded[2],
        made.info.fallback, alignmentTime(made.info));
    return made;
}

void measureTime(Study &study) {
    std::vector<double> &shares = study.alignmentTimes;
    const auto middle = shares.begin() + static_cast<std::ptrdiff_t>(shares.size() / 2);
    std::nth_element(shares.begin(), middle, shares.end());
    std::printf(
        "\nTime of alignment and ghost detection, median of %zu merges of %s: %s %% of the engine's (at most "
        "33.3)\n",
        shares.size(), study.sizes.back().name, study.bars.atMost(*middle, 100.0 / 3, 1).c_str());
}

} // namespace tristop::quality
