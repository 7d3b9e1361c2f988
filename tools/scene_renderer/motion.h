// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>

namespace tristop::scene {

/// A place in a picture or a difference of two; x right, y down.
struct Position {
    double x = 0, y = 0;
};

/// How the camera was held in one shot, relative to a camera that was held still.
///
/// With c the picture's centre ((width - 1) / 2, (height - 1) / 2), the shot's pixel position p sees the
/// scene point that the still camera sees at
///
///     s(p) = c + shift + R q / (1 + perspectiveX q.x / width + perspectiveY q.y / height),   q = p - c,
///
/// where R turns by rotationDegrees from the x axis towards the y axis: clockwise, as y points down.
/// A positive shiftX points the camera further right, so everything in the picture moves left by shiftX
/// pixels; a positive shiftY points it further down, so everything moves up; a positive rotation turns the
/// camera clockwise and the picture's content counterclockwise. A perspective of 0.01 shows what is near
/// the right (or bottom) border 0.5 % further from the centre, and what is near the opposite border 0.5 %
/// closer.
struct ShotMotion {
    double shiftX = 0, shiftY = 0; ///< pixels, up to ten times the picture's longer side
    double rotationDegrees = 0;
    double perspectiveX = 0, perspectiveY = 0; ///< change of scale across the picture, -0.5 to 0.5
};

/// A projective map of the plane.
class Homography {
public:
    using Matrix = std::array<std::array<double, 3>, 3>;

    explicit Homography(const Matrix &matrix) : matrix(matrix) {}

    /// The map from a shot's pixel positions to those of the still camera: s(p) above.
    static Homography stillFromShot(const ShotMotion &motion, int width, int height);

    Position operator()(Position p) const;
    Homography inverse() const;
    /// The map that applies `first`, then this.
    Homography after(const Homography &first) const;

private:
    Matrix matrix;
};

/// Where the static scene went between a reference shot and another: the scene point seen at the reference's
/// pixel position p is seen in the other shot at p - d(p).
class DisplacementField {
public:
    explicit DisplacementField(const Homography &shotFromReference) : shotFromReference(shotFromReference) {}

    /// d(p) in pixels, for the reference's pixel position (x, y).
    Position at(double x, double y) const {
        const Position q = shotFromReference({x, y});
        return {x - q.x, y - q.y};
    }

private:
    Homography shotFromReference;
};

} // namespace tristop::scene
