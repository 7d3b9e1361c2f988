// SPDX-License-Identifier: MIT
// The motion between the reference and another exposure, found from the coarse to the fine.
#pragma once

#include "engine/prepare/block_refinement.h"
#include "engine/prepare/features.h"
#include "engine/prepare/luma_pyramid.h"
#include "engine/prepare/motion_model.h"
#include "engine/prepare/warp_field.h"

#include <array>

namespace hdr {

/// One search: the shift of the whole picture, then features around it, then blocks all over the picture.
/// Each step starts from what the one before it found and fits a motion no more complex than its observations
/// support.
class MotionSearch {
public:
    /// The pictures must outlive the search and have one size.
    MotionSearch(MemContext *memory, const FeatureGrid &grid, const LumaPyramid &other);

    /// Most times that one search calls its `report`.
    static constexpr int kMostReports = 20;

    /// Searches; `report` is called after each batch of blocks and ends the search by returning false. 0,
    /// HDR_ERR_NOMEM or HDR_CANCELLED.
    template <typename Report>
    HdrStatus run(Report report) {
        HdrStatus status = start();
        for (int pass = 0; status == HDR_OK && pass < passes(); pass++) {
            for (int batch = 0; batch < kBatches; batch++) {
                measureBatch(pass, batch);
                if (!report())
                    return HDR_CANCELLED;
            }
            status = finishPass();
        }
        return status;
    }

    /// Whether the exposures agree on the motion, or one of them shows so little that there is nothing to
    /// agree on (then there is no motion). `trustedMatches` features that agree are enough.
    bool isBelievable(int trustedMatches) const;
    MotionKind kind() const { return choice.kind; }
    /// The displacement at the warp nodes.
    const WarpField &field() const { return warpField; }
    /// Writes the place of each feature's match, in reduced pixels, and 1 where it follows the field, else 0
    /// ([3][kFeatureCapacity]: x, y, follows). x is negative where there is no match.
    void recordMatches(float *table) const;

private:
    /// A search for features at one level of resolution around the motion known so far.
    struct FeatureSearch {
        int longerSide; ///< of the picture at that level, at most
        int radius;     ///< in its pixels
        MotionKind most;
    };
    static constexpr FeatureSearch kWideSearch = {400, 10, MotionKind::similarity};
    static constexpr FeatureSearch kCloseSearch = {800, 4, MotionKind::homography};
    /// Batches of blocks in each of at most two passes.
    static constexpr int kBatches = kMostReports / 2;

    HdrStatus start();
    void searchFeatures(const FeatureSearch &search);
    /// Blocks are measured at the finest level that the pyramids keep, then at full resolution.
    int passes() const;
    void measureBatch(int pass, int batch);
    HdrStatus finishPass();
    /// Share of the picture that both exposures show neither clipped nor crushed.
    double comparableShare() const;

    MemContext *memory;
    const FeatureGrid &grid;
    const LumaPyramid &reference;
    const LumaPyramid &other;
    BlockLayout layout;
    Buffer<uint8_t>
        wanted; ///< for each block, whether the pass measures it: the second pass what the first found
    Buffer<Observation> blocks; ///< for each block
    Buffer<Observation> found;  ///< those that were found
    size_t foundCount = 0;
    WarpField warpField;

    MotionChoice choice;
    std::array<FeatureMatch, kFeatureCapacity> matches;
    int matchCount = 0;
    double wholePictureCorrelation = 0;
    double featuresExplained = 0;
    bool comparable = true;
};

} // namespace hdr
