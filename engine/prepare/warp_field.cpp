// SPDX-License-Identifier: MIT
#include "engine/prepare/warp_field.h"

#include <array>

namespace hdr {

namespace {

/// Strength of the pull of neighbouring nodes on each other, and of the global motion on each node, as
/// information: one good observation has 16.
constexpr double kSmoothness = 8;
constexpr double kPrior = 1;
/// Deviations from the global motion are followed from the first length on, fully from the second on, in
/// pixels.
constexpr double kFirstFollowed = 0.2;
constexpr double kFullyFollowed = 0.6;
/// Tolerance of deviations from the field, in pixels: at the start, a share of the limit, and at the end.
constexpr double kFirstTolerance = 0.7;
constexpr double kLastTolerance = 0.8;
constexpr int kReweightings = 8;
constexpr int kMostSweeps = 40;
/// Largest change of a node in a sweep, as a share of the tolerance, that ends the sweeps.
constexpr double kSettled = 0.004;

Vector nodePosition(int column, int row) {
    return {static_cast<double>(warpNodePosition(column)), static_cast<double>(warpNodePosition(row))};
}

/// The smooth deviation of the observations from a global motion, on the nodes of a field: the minimum of a
/// robust data term, the squared differences of neighbouring nodes, and the squared deviation itself.
class LocalDeviation {
public:
    LocalDeviation(MemContext *memory, const WarpField &field, const Motion &motion,
                   const Observation *observations, size_t count, double limit)
        : columns(field.columns()), rows(field.rows()), stride(columns + 2), count(count), limit(limit),
          samples(memory, count + 1),
          equations(memory, static_cast<size_t>(stride) * static_cast<size_t>(rows + 2)),
          nodes(Buffer<Vector>::zeroed(memory, equations.size())) {
        if (!ok())
            return;
        for (size_t i = 0; i < count; i++) {
            const Observation &observation = observations[i];
            samples[i] = {WarpCell(observation.position, columns, rows),
                          observation.displacement - motion.displacement(observation.position),
                          observation.information, 1};
        }
    }

    bool ok() const { return samples && equations && nodes; }
    const Vector &at(int column, int row) const { return nodes[index(column, row)]; }

    /// Iterated reweighting (Geman and McClure 1985) around Gauss-Seidel sweeps.
    void solve() {
        double tolerance = kFirstTolerance * limit;
        for (int round = 0; round < kReweightings; round++) {
            for (size_t i = 0; i < count; i++) {
                Sample &sample = samples[i];
                const double off = (sample.deviation - valueAt(sample.place)).squaredLength();
                const double share = tolerance * tolerance / (tolerance * tolerance + off);
                sample.weight = sample.deviation.squaredLength() > limit * limit ? 0 : share * share;
            }
            assemble();
            const double settled = kSettled * tolerance;
            for (int i = 0; i < kMostSweeps && sweep() > settled * settled; i++)
                continue;
            tolerance = std::max(0.7 * tolerance, kLastTolerance);
        }
        for (Vector &node : nodes) {
            const double length = std::sqrt(node.squaredLength());
            node = std::clamp((length - kFirstFollowed) / (kFullyFollowed - kFirstFollowed), 0.0, 1.0) * node;
        }
    }

private:
    struct Sample {
        WarpCell place;
        Vector deviation;
        std::array<double, 3> information;
        double weight;
    };
    /// A symmetric 2 x 2 matrix: xx, xy, yy.
    using Matrix = std::array<double, 3>;
    static constexpr size_t kSelf = 4;
    /// One node's row of the normal equations: its coupling to itself and its eight neighbours, row by row.
    struct NodeEquation {
        std::array<Matrix, 9> coupling;
        Vector right;
    };

    size_t index(int column, int row) const { return static_cast<size_t>((row + 1) * stride + column + 1); }

    Vector valueAt(const WarpCell &place) const {
        return place.interpolate([this](int column, int row) { return at(column, row); });
    }

    void assemble() {
        for (NodeEquation &equation : equations) {
            equation = {};
            equation.coupling[kSelf] = {kPrior, 0, kPrior};
        }
        for (int row = 0; row < rows; row++) {
            for (int column = 0; column < columns; column++) {
                if (column + 1 < columns)
                    tie(index(column, row), kSelf + 1, index(column + 1, row), kSelf - 1);
                if (row + 1 < rows)
                    tie(index(column, row), kSelf + 3, index(column, row + 1), kSelf - 3);
            }
        }
        for (size_t i = 0; i < count; i++)
            add(samples[i]);
    }

    /// Makes two neighbouring nodes pull on each other; each sees the other at the given place.
    void tie(size_t a, size_t placeOfB, size_t b, size_t placeOfA) {
        for (size_t diagonal : {0, 2}) {
            equations[a].coupling[kSelf][diagonal] += kSmoothness;
            equations[b].coupling[kSelf][diagonal] += kSmoothness;
            equations[a].coupling[placeOfB][diagonal] -= kSmoothness;
            equations[b].coupling[placeOfA][diagonal] -= kSmoothness;
        }
    }

    void add(const Sample &sample) {
        const auto &[xx, xy, yy] = sample.information;
        const Vector pull = {xx * sample.deviation.x + xy * sample.deviation.y,
                             xy * sample.deviation.x + yy * sample.deviation.y};
        for (int node = 0; node < 4; node++) {
            const int right = node % 2, down = node / 2;
            NodeEquation &equation = equations[index(sample.place.column + right, sample.place.row + down)];
            const double weight = sample.weight * sample.place.weight(right, down);
            equation.right = equation.right + weight * pull;
            for (int other = 0; other < 4; other++) {
                const int toRight = other % 2 - right, toDown = other / 2 - down;
                Matrix &coupling = equation.coupling[static_cast<size_t>(4 + 3 * toDown + toRight)];
                const double both = weight * sample.place.weight(other % 2, other / 2);
                coupling[0] += both * xx;
                coupling[1] += both * xy;
                coupling[2] += both * yy;
            }
        }
    }

    /// Solves each node's equation for it. Returns the largest squared change.
    double sweep() {
        double largest = 0;
        for (int row = 0; row < rows; row++) {
            for (int column = 0; column < columns; column++) {
                const size_t own = index(column, row);
                const NodeEquation &equation = equations[own];
                Vector right = equation.right;
                for (size_t place = 0; place < equation.coupling.size(); place++) {
                    if (place == kSelf)
                        continue;
                    const auto &[xx, xy, yy] = equation.coupling[place];
                    const Vector &other = nodes[own + place / 3 * static_cast<size_t>(stride) + place % 3 -
                                                static_cast<size_t>(stride) - 1];
                    right = right - Vector{xx * other.x + xy * other.y, xy * other.x + yy * other.y};
                }
                const auto &[xx, xy, yy] = equation.coupling[kSelf];
                const double determinant = xx * yy - xy * xy;
                const Vector solved = {(yy * right.x - xy * right.y) / determinant,
                                       (xx * right.y - xy * right.x) / determinant};
                Vector &node = nodes[own];
                largest = std::max(largest, (solved - node).squaredLength());
                node = solved;
            }
        }
        return largest;
    }

    int columns, rows;
    int stride; ///< of the arrays of nodes, which have a frame of nodes that stay zero
    size_t count;
    double limit;
    Buffer<Sample> samples;
    Buffer<NodeEquation> equations;
    Buffer<Vector> nodes;
};

} // namespace

WarpField::WarpField(MemContext *memory, int width, int height)
    : width(width), height(height), columnCount(warpNodeCount(width)), rowCount(warpNodeCount(height)),
      nodes(memory, static_cast<size_t>(columnCount) * static_cast<size_t>(rowCount)) {}

Vector WarpField::displacement(Vector position) const {
    return WarpCell(position, columnCount, rowCount).interpolate([this](int column, int row) {
        return at(column, row);
    });
}

void WarpField::follow(const Motion &motion) {
    for (int row = 0; row < rowCount; row++)
        for (int column = 0; column < columnCount; column++)
            at(column, row) = motion.displacement(nodePosition(column, row));
}

HdrStatus WarpField::follow(MemContext *memory, const Motion &motion, const Observation *observations,
                            size_t count, double limit) {
    follow(motion);
    LocalDeviation deviation(memory, *this, motion, observations, count, limit);
    if (!deviation.ok())
        return HDR_ERR_NOMEM;
    deviation.solve();
    for (int row = 0; row < rowCount; row++)
        for (int column = 0; column < columnCount; column++)
            at(column, row) = at(column, row) + deviation.at(column, row);
    return HDR_OK;
}

} // namespace hdr
