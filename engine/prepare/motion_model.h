// SPDX-License-Identifier: MIT
// The global motion between two exposures, and its robust estimation from local displacements.
#pragma once

#include "engine/core/buffer.h"

#include <array>
#include <cstddef>
#include <limits>

namespace hdr {

struct Vector {
    double x = 0, y = 0;

    friend Vector operator+(Vector a, Vector b) { return {a.x + b.x, a.y + b.y}; }
    friend Vector operator-(Vector a, Vector b) { return {a.x - b.x, a.y - b.y}; }
    friend Vector operator*(double s, Vector a) { return {s * a.x, s * a.y}; }
    double squaredLength() const { return x * x + y * y; }
};

/// Kinds of motion, each containing the ones before it.
enum class MotionKind { none, translation, similarity, homography };

/// A projective map from positions in the reference to positions in another exposure, in full-resolution
/// pixels, seen as a displacement: the scene at p in the reference is at p - displacement(p) in the other
/// one.
class Motion {
public:
    /// No motion, for pictures of this size.
    Motion(int width, int height);

    /// No motion, for pictures of the same size.
    Motion without() const;

    Vector displacement(Vector position) const;
    /// The largest length of displacement(p) - other.displacement(p) over the picture's corners and centre.
    double distance(const Motion &other) const;
    /// Whether the map could come from a camera held by hand: it neither mirrors nor folds, and scale and
    /// shape change little anywhere in the picture.
    bool plausible() const;

    /// The positions in the reference that `distance` looks at.
    std::array<Vector, 5> landmarks() const;

private:
    friend class MotionFit;

    Vector centre;
    double scale; ///< half the diagonal
    /// With n the position relative to the centre in units of `scale`, the other exposure's is
    /// ((1 + c0) n.x + c1 n.y + c2, c3 n.x + (1 + c4) n.y + c5) / (1 + c6 n.x + c7 n.y).
    std::array<double, 8> coefficients{};
};

/// A displacement measured at one place, with its certainty.
struct Observation {
    Vector position;
    Vector displacement;
    /// Inverse covariance {xx, xy, yy} of the displacement, in 1/pixel^2: along an edge it is small.
    std::array<double, 3> information;

    bool isInformative() const { return information[0] + information[2] > 0; }
    /// Squared distance of a displacement from the measured one, in standard deviations.
    double squaredDeviation(Vector other) const {
        const Vector r = displacement - other;
        return information[0] * r.x * r.x + 2 * information[1] * r.x * r.y + information[2] * r.y * r.y;
    }
};

/// A robust fit of one kind of motion: minimises the sum of d^2 / (d^2 + t^2) with d the observations'
/// deviations (Geman and McClure 1985) by iterated reweighting from `start`, with the tolerance t shrinking
/// from `firstTolerance` to `lastTolerance`. Leaves `start` when the observations do not determine the
/// motion.
Motion fitMotion(MotionKind kind, const Motion &start, const Observation *observations, size_t count,
                 double firstTolerance, double lastTolerance);

/// Sum over the observations of min(d^2, t^2) / t^2: the number that the motion leaves unexplained. From
/// `enough` on the sum may be incomplete.
double unexplained(const Motion &motion, const Observation *observations, size_t count, double tolerance,
                   double enough = std::numeric_limits<double>::infinity());

/// A motion, its kind, and how well it explains the observations.
struct MotionChoice {
    Motion motion;
    MotionKind kind;
    double explained = 0; ///< observations that agree with it
};

/// Fits every kind of motion up to `most` and returns the simplest one that explains the observations nearly
/// as well as the ones that contain it: a plausible one, and one that the number of observations supports.
/// Keeps `start` when that still explains more.
MotionChoice chooseMotion(MotionKind most, const MotionChoice &start, const Observation *observations,
                          size_t count, double firstTolerance, double lastTolerance);

/// The similarity that agrees best with the observations among those that two of them determine, for
/// observations of which many may be wrong. `tolerance` is in standard deviations. Falls back to `start`
/// unless another explains more.
Motion consensusSimilarity(const Motion &start, const Observation *observations, size_t count,
                           double tolerance);

} // namespace hdr
