// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/scene_renderer/motion.h"

#include <cmath>
#include <cstddef>
#include <numbers>

namespace tristop::scene {

Homography Homography::stillFromShot(const ShotMotion &motion, int width, int height) {
    const double cx = (width - 1) / 2.0, cy = (height - 1) / 2.0;
    const double angle = motion.rotationDegrees * std::numbers::pi / 180;
    const double cosine = std::cos(angle), sine = std::sin(angle);
    const double px = motion.perspectiveX / width, py = motion.perspectiveY / height;
    const double sx = cx + motion.shiftX, sy = cy + motion.shiftY;
    const Homography toCentre({{{1, 0, -cx}, {0, 1, -cy}, {0, 0, 1}}});
    const Homography turnAndPlace(
        {{{cosine + sx * px, -sine + sx * py, sx}, {sine + sy * px, cosine + sy * py, sy}, {px, py, 1}}});
    return turnAndPlace.after(toCentre);
}

Position Homography::operator()(Position p) const {
    const auto row = [&](std::size_t i) { return matrix[i][0] * p.x + matrix[i][1] * p.y + matrix[i][2]; };
    const double scale = 1 / row(2);
    return {row(0) * scale, row(1) * scale};
}

Homography Homography::inverse() const {
    // The adjugate; the common factor of a projective map does not matter.
    Matrix result;
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t j = 0; j < 3; ++j) {
            const std::size_t r0 = (j + 1) % 3, r1 = (j + 2) % 3, c0 = (i + 1) % 3, c1 = (i + 2) % 3;
            result[i][j] = matrix[r0][c0] * matrix[r1][c1] - matrix[r0][c1] * matrix[r1][c0];
        }
    return Homography(result);
}

Homography Homography::after(const Homography &first) const {
    Matrix result{};
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t j = 0; j < 3; ++j)
            for (std::size_t k = 0; k < 3; ++k)
                result[i][j] += matrix[i][k] * first.matrix[k][j];
    return Homography(result);
}

} // namespace tristop::scene
