// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/quality/alignment_error.h"

#include "tools/quality/scenes.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tristop::quality {

namespace {

constexpr int kLatticeColumns = 400;
constexpr double kLeastMeasured = 0.8;

AlignmentError summarise(std::vector<double> &errors) {
    double squares = 0;
    for (const double error : errors)
        squares += error * error;
    const auto place = errors.begin() + static_cast<std::ptrdiff_t>(errors.size() * 99 / 100);
    std::nth_element(errors.begin(), place, errors.end());
    return {std::sqrt(squares / static_cast<double>(errors.size())), *place};
}

} // namespace

AlignmentError AlignmentError::worse(const AlignmentError &other) const {
    return {std::max(rms, other.rms), std::max(percentile99, other.percentile99)};
}

AlignmentError alignmentError(const MergeRun &run, const scene::SceneSettings &settings) {
    constexpr double kInfinite = std::numeric_limits<double>::infinity();
    if (run.info.midIndex != kMiddle)
        return {kInfinite, kInfinite};
    const MovedPlaces moved(settings);
    const auto toDark = scene::trueDisplacement(settings, kDark, kMiddle);
    const auto toBright = scene::trueDisplacement(settings, kBright, kMiddle);
    const auto isInside = [&](double x, double y) {
        return x >= 0 && y >= 0 && x <= settings.width - 1 && y <= settings.height - 1;
    };
    // An odd step meets the grid's cells at ever other places.
    const int step = settings.width / kLatticeColumns | 1;
    std::array<std::vector<double>, 2> errors;
    int measurable = 0;
    for (int y = step / 2; y < settings.height; y += step)
        for (int x = step / 2; x < settings.width; x += step) {
            const scene::Position dark = toDark.at(x, y), bright = toBright.at(x, y);
            if (!isInside(x - dark.x, y - dark.y) || !isInside(x - bright.x, y - bright.y) || moved.at(x, y))
                continue;
            measurable++;
            if (x < run.valid.x0 || y < run.valid.y0 || x >= run.valid.x1 || y >= run.valid.y1)
                continue;
            const scene::Position followedDark = run.displacement[kDark].at(x, y);
            const scene::Position followedBright = run.displacement[kBright].at(x, y);
            errors[0].push_back(std::hypot(followedDark.x - dark.x, followedDark.y - dark.y));
            errors[1].push_back(std::hypot(followedBright.x - bright.x, followedBright.y - bright.y));
        }
    if (static_cast<double>(errors[0].size()) < kLeastMeasured * measurable || errors[0].empty())
        return {kInfinite, kInfinite};
    return summarise(errors[0]).worse(summarise(errors[1]));
}

} // namespace tristop::quality
