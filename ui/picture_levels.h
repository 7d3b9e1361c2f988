// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include <QImage>

namespace tristop {

/// A picture and its reductions to a half, a quarter and so on, each the mean of 2 x 2 pixels of the one
/// before. Reductions have 32-bit pixels, premultiplied where the picture is translucent. An odd row or
/// column counts twice: pixel (x, y) of level n always covers the 2^n x 2^n pixels from (x 2^n, y 2^n) on.
class PictureLevels {
public:
    /// Enough for views at a hundredth of the picture's size.
    static constexpr size_t kCount = 7;

    PictureLevels() = default;
    /// Only the picture itself.
    explicit PictureLevels(const QImage &picture);
    /// All levels; takes a while for a large picture.
    static PictureLevels reduced(const QImage &picture);

    QSize size() const { return levels.empty() ? QSize() : levels.front().size(); }
    size_t count() const { return levels.size(); }
    const QImage &level(size_t index) const { return levels[index]; }
    /// The smallest level that still has at least `scale` times the picture's pixels on each side.
    size_t levelFor(double scale) const;

private:
    std::vector<QImage> levels;
};

} // namespace tristop
