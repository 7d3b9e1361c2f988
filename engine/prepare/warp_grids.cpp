// SPDX-License-Identifier: MIT
#include "engine/prepare/warp_grids.h"

#include "engine/check/input_check.h"
#include "engine/prepare/preparation.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace hdr {

namespace {

/// What a node gains by leaving the whole number nearest to the field, in squared pixels over a cell's area.
constexpr double kLeastGain = 0.1;
constexpr int kRoundingSweeps = 8;

/// Half away from zero.
int roundAway(double value) {
    return static_cast<int>(value < 0 ? std::ceil(value - 0.5) : std::floor(value + 0.5));
}

/// Divides a displacement of the whole picture into one of at most kLargestShift pixels and whole grid cells.
void divideShift(int displacement, int32_t &shift, int32_t &cells) {
    const int excess = std::max(std::abs(displacement) - kLargestShift, 0);
    const int steps = (excess + kCellSize - 1) / kCellSize;
    cells = displacement < 0 ? -steps : steps;
    shift = displacement - cells * kCellSize;
}

/// Chooses whole numbers for one coordinate: coordinate descent on the integral of the squared difference
/// between the two interpolations.
template <typename Coordinate>
void roundNodes(const WarpField &field, int32_t shift, int32_t *grid, Coordinate coordinate) {
    const auto index = [&](int column, int row) { return row * field.columns() + column; };
    const auto error = [&](int column, int row) {
        return grid[index(column, row)] + shift - coordinate(field.at(column, row));
    };
    for (int row = 0; row < field.rows(); row++)
        for (int column = 0; column < field.columns(); column++)
            grid[index(column, row)] = roundAway(coordinate(field.at(column, row))) - shift;
    for (int sweep = 0; sweep < kRoundingSweeps; sweep++) {
        bool changed = false;
        for (int row = 0; row < field.rows(); row++) {
            for (int column = 0; column < field.columns(); column++) {
                // The gradient of the integral at this node: the bilinear elements' mass matrix, in 1/36
                // cells.
                double gradient = 0, own = 0;
                for (int v = std::max(row - 1, 0); v <= std::min(row + 1, field.rows() - 1); v++) {
                    for (int u = std::max(column - 1, 0); u <= std::min(column + 1, field.columns() - 1);
                         u++) {
                        const int cellsX = u != column ? 1 : (column > 0) + (column + 1 < field.columns());
                        const int cellsY = v != row ? 1 : (row > 0) + (row + 1 < field.rows());
                        const double mass =
                            cellsX * (u == column ? 2 : 1) * cellsY * (v == row ? 2 : 1) / 36.0;
                        gradient += mass * error(u, v);
                        if (u == column && v == row)
                            own = mass;
                    }
                }
                const int step = gradient > 0 ? -1 : 1;
                if (own + 2 * step * gradient < -kLeastGain) {
                    grid[index(column, row)] += step;
                    changed = true;
                }
            }
        }
        if (!changed)
            break;
    }
}

} // namespace

void roundWarpField(const WarpField &field, Alignment &alignment, int input) {
    const Vector middle = field.displacement(field.centre());
    int32_t *shift = alignment.globalShift[input];
    int32_t *cells = alignment.gridShift[input];
    divideShift(roundAway(middle.x), shift[0], cells[0]);
    divideShift(roundAway(middle.y), shift[1], cells[1]);
    roundNodes(field, shift[0], alignment.warpX[input], [](const Vector &v) { return v.x; });
    roundNodes(field, shift[1], alignment.warpY[input], [](const Vector &v) { return v.y; });
}

Vector warpDisplacement(const Alignment &alignment, int input, Vector position) {
    const int32_t *shift = alignment.globalShift[input];
    const WarpCell cell(position, alignment.warpWidth, alignment.warpHeight);
    return cell.interpolate([&](int column, int row) {
        const int node = row * alignment.warpWidth + column;
        return Vector{static_cast<double>(shift[0] + alignment.warpX[input][node]),
                      static_cast<double>(shift[1] + alignment.warpY[input][node])};
    });
}

bool isUnmoved(const Alignment &alignment, int input) {
    const int nodes = alignment.warpWidth * alignment.warpHeight;
    const auto allZero = [nodes](const int32_t *grid) {
        return std::all_of(grid, grid + nodes, [](int32_t value) { return value == 0; });
    };
    return alignment.globalShift[input][0] == 0 && alignment.globalShift[input][1] == 0 &&
           allZero(alignment.warpX[input]) && allZero(alignment.warpY[input]);
}

} // namespace hdr
