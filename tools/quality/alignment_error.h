// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/quality/merge_run.h"

namespace tristop::quality {

/// How far a run's displacements are from the true ones, in pixels.
struct AlignmentError {
    double rms = 0;
    double percentile99 = 0;

    /// The larger of both, each by itself.
    AlignmentError worse(const AlignmentError &other) const;
};

/// The error of the dark and the bright exposure, whichever is worse, over a lattice of the reference's
/// pixels that lie in the run's valid area, see what all three shots see, and see nothing that moved.
/// Infinite when the run took another shot for the reference, or measures less than four fifths of what it
/// could: an area declared invalid is no area well aligned.
AlignmentError alignmentError(const MergeRun &run, const scene::SceneSettings &settings);

} // namespace tristop::quality
