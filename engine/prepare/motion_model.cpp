// SPDX-License-Identifier: MIT
#include "engine/prepare/motion_model.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace hdr {

namespace {

constexpr size_t kMostUnknowns = 8;
/// Rounds of reweighting of one fit.
constexpr int kRounds = 12;
/// Pairs of observations nearer to each other than this share of the half diagonal determine no similarity.
constexpr double kShortestBase = 0.2;
/// Pairs in which a consensus is looked for, at most; of more only some, spread evenly, are tried.
constexpr size_t kMostPairs = 1500;
/// Bounds on what a hand does between two shots.
constexpr double kLargestScaleChange = 0.08;
constexpr double kLargestRotation = 0.2;
constexpr double kLargestPerspective = 0.06;

/// What a kind of motion with more unknowns has to explain more than a simpler one: this many observations
/// for each further unknown, and this share of them all.
constexpr double kGainPerUnknown = 1.5;
constexpr double kRelativeGain = 0.005;
/// Observations that each unknown needs.
constexpr double kObservationsPerUnknown = 2;
/// Motions that differ by less than this many pixels are the same.
constexpr double kLeastDifference = 0.2;

double unknownsOf(MotionKind kind) {
    constexpr std::array<double, 4> unknowns = {0, 2, 4, 8};
    return unknowns[static_cast<size_t>(kind)];
}

/// The normal equations of a weighted linear least-squares problem with a few unknowns.
struct NormalEquations {
    size_t unknowns;
    std::array<std::array<double, kMostUnknowns>, kMostUnknowns> matrix{};
    std::array<double, kMostUnknowns> right{};

    /// Solves in place by Cholesky factorisation; false when the problem is singular.
    bool solve(std::array<double, kMostUnknowns> &solution) {
        std::array<double, kMostUnknowns> diagonal{};
        for (size_t k = 0; k < unknowns; k++)
            diagonal[k] = matrix[k][k];
        for (size_t row = 0; row < unknowns; row++) {
            for (size_t column = 0; column <= row; column++) {
                double sum = matrix[row][column];
                for (size_t k = 0; k < column; k++)
                    sum -= matrix[row][k] * matrix[column][k];
                if (row != column) {
                    matrix[row][column] = sum / matrix[column][column];
                } else {
                    if (!(sum > 1e-9 * diagonal[row]))
                        return false;
                    matrix[row][row] = std::sqrt(sum);
                }
            }
        }
        for (size_t row = 0; row < unknowns; row++) {
            double sum = right[row];
            for (size_t k = 0; k < row; k++)
                sum -= matrix[row][k] * solution[k];
            solution[row] = sum / matrix[row][row];
        }
        for (size_t row = unknowns; row-- > 0;) {
            double sum = solution[row];
            for (size_t k = row + 1; k < unknowns; k++)
                sum -= matrix[k][row] * solution[k];
            solution[row] = sum / matrix[row][row];
        }
        return true;
    }
};

} // namespace

/// One step of a weighted least-squares fit.
class MotionFit {
public:
    MotionFit(MotionKind kind, const Motion &motion) : kind(kind), motion(motion) {
        equations.unknowns = static_cast<size_t>(unknownsOf(kind));
    }

    void add(const Observation &observation, double weight) {
        const double scale = motion.scale;
        const Vector n = (1 / scale) * (observation.position - motion.centre);
        const Vector v = (1 / scale) * observation.displacement;
        const Vector q = n - v;
        std::array<double, kMostUnknowns> alongX{}, alongY{};
        switch (kind) {
        case MotionKind::none:
            return;
        case MotionKind::translation:
            alongX = {1, 0};
            alongY = {0, 1};
            break;
        case MotionKind::similarity:
            alongX = {n.x, -n.y, 1, 0};
            alongY = {n.y, n.x, 0, 1};
            break;
        case MotionKind::homography:
            alongX = {n.x, n.y, 1, 0, 0, 0, -q.x * n.x, -q.x * n.y};
            alongY = {0, 0, 0, n.x, n.y, 1, -q.y * n.x, -q.y * n.y};
            break;
        }
        const double wxx = weight * observation.information[0];
        const double wxy = weight * observation.information[1];
        const double wyy = weight * observation.information[2];
        for (size_t i = 0; i < equations.unknowns; i++) {
            const double fromX = wxx * alongX[i] + wxy * alongY[i];
            const double fromY = wxy * alongX[i] + wyy * alongY[i];
            for (size_t k = 0; k <= i; k++)
                equations.matrix[i][k] += fromX * alongX[k] + fromY * alongY[k];
            equations.right[i] -= fromX * v.x + fromY * v.y;
        }
    }

    /// The fitted motion, or the one given at first when the observations do not determine it.
    Motion solve() {
        std::array<double, kMostUnknowns> s{};
        if (!equations.solve(s))
            return motion;
        Motion fitted = motion;
        switch (kind) {
        case MotionKind::none:
            break;
        case MotionKind::translation:
            fitted.coefficients = {0, 0, s[0], 0, 0, s[1], 0, 0};
            break;
        case MotionKind::similarity:
            fitted.coefficients = {s[0], -s[1], s[2], s[1], s[0], s[3], 0, 0};
            break;
        case MotionKind::homography:
            fitted.coefficients = s;
            break;
        }
        return fitted;
    }

private:
    MotionKind kind;
    Motion motion;
    NormalEquations equations{};
};

Motion::Motion(int width, int height)
    : centre{(width - 1) / 2.0, (height - 1) / 2.0}, scale(std::sqrt(centre.squaredLength())) {}

Motion Motion::without() const {
    Motion none = *this;
    none.coefficients = {};
    return none;
}

Vector Motion::displacement(Vector position) const {
    const auto &c = coefficients;
    const Vector n = (1 / scale) * (position - centre);
    const double w = 1 + c[6] * n.x + c[7] * n.y;
    const Vector q = {((1 + c[0]) * n.x + c[1] * n.y + c[2]) / w, (c[3] * n.x + (1 + c[4]) * n.y + c[5]) / w};
    return scale * (n - q);
}

std::array<Vector, 5> Motion::landmarks() const {
    const Vector far = 2 * centre;
    return {{centre, {0, 0}, {far.x, 0}, {0, far.y}, far}};
}

double Motion::distance(const Motion &other) const {
    double largest = 0;
    for (const Vector &p : landmarks())
        largest = std::max(largest, (displacement(p) - other.displacement(p)).squaredLength());
    return std::sqrt(largest);
}

bool Motion::plausible() const {
    const auto &c = coefficients;
    if (std::abs(c[6]) + std::abs(c[7]) > kLargestPerspective)
        return false;
    // A similarity's part of the linear map, and what is left of it.
    const double stretch = (c[0] + c[4]) / 2;
    const double turn = (c[3] - c[1]) / 2;
    const double shape = std::max(std::abs(c[0] - c[4]) / 2, std::abs(c[1] + c[3]) / 2);
    return std::abs(stretch) <= kLargestScaleChange && std::abs(turn) <= kLargestRotation &&
           shape <= kLargestPerspective;
}

Motion fitMotion(MotionKind kind, const Motion &start, const Observation *observations, size_t count,
                 double firstTolerance, double lastTolerance) {
    Motion motion = start;
    double tolerance = firstTolerance;
    for (int round = 0; round < kRounds; round++) {
        MotionFit fit(kind, motion);
        for (size_t i = 0; i < count; i++) {
            const double deviation =
                observations[i].squaredDeviation(motion.displacement(observations[i].position));
            const double share = tolerance * tolerance / (tolerance * tolerance + deviation);
            fit.add(observations[i], share * share);
        }
        motion = fit.solve();
        tolerance = std::max(lastTolerance, 0.7 * tolerance);
    }
    return motion;
}

double unexplained(const Motion &motion, const Observation *observations, size_t count, double tolerance,
                   double enough) {
    const double limit = tolerance * tolerance;
    double sum = 0;
    for (size_t i = 0; i < count && sum < enough; i++)
        sum += std::min(
            observations[i].squaredDeviation(motion.displacement(observations[i].position)) / limit, 1.0);
    return sum;
}

MotionChoice chooseMotion(MotionKind most, const MotionChoice &start, const Observation *observations,
                          size_t count, double firstTolerance, double lastTolerance) {
    const auto explainedBy = [&](const Motion &motion) {
        return static_cast<double>(count) - unexplained(motion, observations, count, lastTolerance);
    };
    const double margin = kRelativeGain * static_cast<double>(count);
    const Motion none = start.motion.without();
    MotionChoice best = {none, MotionKind::none, explainedBy(none)};
    for (MotionKind kind : {MotionKind::translation, MotionKind::similarity, MotionKind::homography}) {
        if (kind > most)
            break;
        const Motion motion =
            fitMotion(kind, start.motion, observations, count, firstTolerance, lastTolerance);
        const double explained = explainedBy(motion);
        const double furtherUnknowns = unknownsOf(kind) - unknownsOf(best.kind);
        if (motion.plausible() && explained >= kObservationsPerUnknown * unknownsOf(kind) &&
            explained > best.explained + kGainPerUnknown * furtherUnknowns + margin &&
            motion.distance(best.motion) > kLeastDifference)
            best = {motion, kind, explained};
    }
    const double kept = explainedBy(start.motion);
    if (best.explained < kept - margin || best.explained == 0)
        return {start.motion, start.kind, kept};
    return best;
}

Motion consensusSimilarity(const Motion &start, const Observation *observations, size_t count,
                           double tolerance) {
    Motion best = start;
    double left = unexplained(start, observations, count, tolerance);
    const double shortest = kShortestBase * std::sqrt(start.landmarks()[0].squaredLength());
    const size_t step = count * count / 2 / kMostPairs + 1;
    size_t pair = 0;
    for (size_t i = 0; i < count; i++) {
        for (size_t k = i + 1; k < count; k++) {
            if (pair++ % step != 0)
                continue;
            const Vector base = observations[k].position - observations[i].position;
            if (base.squaredLength() < shortest * shortest)
                continue;
            MotionFit fit(MotionKind::similarity, start);
            fit.add(observations[i], 1);
            fit.add(observations[k], 1);
            const Motion motion = fit.solve();
            if (!motion.plausible())
                continue;
            const double unexplainedByIt = unexplained(motion, observations, count, tolerance, left);
            if (unexplainedByIt < left) {
                left = unexplainedByIt;
                best = motion;
            }
        }
    }
    return best;
}

} // namespace hdr
