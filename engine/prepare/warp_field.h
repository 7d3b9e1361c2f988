// SPDX-License-Identifier: MIT
// The displacement of an exposure as a smooth field on the nodes of the warp grids.
#pragma once

#include "engine/core/buffer.h"
#include "engine/prepare/motion_model.h"

#include <algorithm>
#include <cmath>

namespace hdr {

/// Distance between warp nodes; the first one lies half of it outside the picture.
inline constexpr int kWarpSpacing = 256;

/// Nodes along a side of `pixels`.
constexpr int warpNodeCount(int pixels) {
    return ((pixels + kWarpSpacing / 2 - 1) >> 8) + 2;
}
/// Picture column or row of a node.
constexpr int warpNodePosition(int node) {
    return kWarpSpacing * node - kWarpSpacing / 2;
}

/// The cell of a warp grid that a position falls into (the outermost ones reach on beyond the grid), and the
/// position's place in it.
struct WarpCell {
    int column, row;
    double x, y; ///< 0 at the cell's first node, 1 at the next

    WarpCell(Vector position, int columns, int rows) {
        x = (position.x + kWarpSpacing / 2) / kWarpSpacing;
        y = (position.y + kWarpSpacing / 2) / kWarpSpacing;
        column = std::clamp(static_cast<int>(std::floor(x)), 0, columns - 2);
        row = std::clamp(static_cast<int>(std::floor(y)), 0, rows - 2);
        x -= column;
        y -= row;
    }
    /// Bilinear weight of the node `right` columns and `down` rows from the cell's first.
    double weight(int right, int down) const { return (right ? x : 1 - x) * (down ? y : 1 - y); }
    /// The bilinear interpolation of at(column, row).
    template <typename At>
    Vector interpolate(At at) const {
        Vector sum;
        for (int down : {0, 1})
            for (int right : {0, 1})
                sum = sum + weight(right, down) * at(column + right, row + down);
        return sum;
    }
};

/// Displacements at the warp nodes, below a pixel.
class WarpField {
public:
    /// Without nodes (see ok) when there is no memory for them.
    WarpField(MemContext *memory, int width, int height);
    bool ok() const { return static_cast<bool>(nodes); }

    /// The picture's centre.
    Vector centre() const { return {(width - 1) / 2.0, (height - 1) / 2.0}; }
    int columns() const { return columnCount; }
    int rows() const { return rowCount; }
    Vector &at(int column, int row) { return nodes[index(column, row)]; }
    const Vector &at(int column, int row) const { return nodes[index(column, row)]; }

    /// Bilinear between the nodes, and on beyond the outermost ones.
    Vector displacement(Vector position) const;

    /// Takes the global motion alone.
    void follow(const Motion &motion);
    /// Takes the global motion and, where several neighbouring observations agree on it, a small smooth local
    /// deviation from it. Observations that deviate by more than `limit` pixels show something that moved.
    /// HDR_ERR_NOMEM or 0.
    HdrStatus follow(MemContext *memory, const Motion &motion, const Observation *observations, size_t count,
                     double limit);

private:
    size_t index(int column, int row) const {
        return static_cast<size_t>(row) * static_cast<size_t>(columnCount) + static_cast<size_t>(column);
    }

    int width, height; ///< of the picture
    int columnCount, rowCount;
    Buffer<Vector> nodes;
};

} // namespace hdr
