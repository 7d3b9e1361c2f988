// SPDX-License-Identifier: MIT
#include "engine/prepare/motion_search.h"

#include "engine/prepare/preparation.h"
#include "engine/prepare/whole_picture_shift.h"

#include <algorithm>

namespace hdr {

namespace {

/// Standard deviations by which a match may miss the motion.
constexpr double kFeatureTolerance = 4;
/// Likewise a block, when the motion is first fitted to blocks and in the end.
constexpr double kFirstBlockTolerance = 10, kBlockTolerance = 3;
/// Blocks that miss the motion by more pixels than this, and a share of the picture's longer side, show
/// something that moved.
constexpr double kDeviationLimit = 4, kDeviationLimitShare = 1.0 / 2000;

/// Either makes a motion believable: this many blocks that agree with it, if they are this share of those
/// found, or this correlation of the whole pictures.
constexpr double kFewestBlocks = 4, kBlockShare = 0.1;
constexpr double kTrustedCorrelation = 0.3;

/// Share of the picture below which there is nothing to compare, and longer side of the level where that is
/// counted.
constexpr double kLeastComparable = 0.005;
constexpr int kComparedSide = 400;

constexpr float kNoMatch = -1;

} // namespace

MotionSearch::MotionSearch(MemContext *memory, const FeatureGrid &grid, const LumaPyramid &other)
    : memory(memory), grid(grid), reference(grid.reference), other(other),
      layout(reference.width(0), reference.height(0)), wanted(memory, static_cast<size_t>(layout.count())),
      blocks(memory, wanted.size()), found(memory, wanted.size()),
      warpField(memory, reference.width(0), reference.height(0)), choice{Motion(reference.width(0),
                                                                                reference.height(0)),
                                                                         MotionKind::none} {}

HdrStatus MotionSearch::start() {
    if (!wanted || !blocks || !found || !warpField.ok())
        return HDR_ERR_NOMEM;
    warpField.follow(choice.motion);
    comparable = comparableShare() >= kLeastComparable;
    if (!comparable)
        return HDR_OK;
    WholePictureShift shift;
    if (findWholePictureShift(memory, reference, other, shift) != HDR_OK)
        return HDR_ERR_NOMEM;
    wholePictureCorrelation = shift.correlation;
    const Observation everywhere = {choice.motion.landmarks()[0], shift.displacement, {1, 0, 1}};
    choice.motion = fitMotion(MotionKind::translation, choice.motion, &everywhere, 1, 1, 1);
    choice.kind = MotionKind::translation;
    searchFeatures(kWideSearch);
    searchFeatures(kCloseSearch);
    featuresExplained = choice.explained;
    warpField.follow(choice.motion);
    return HDR_OK;
}

void MotionSearch::searchFeatures(const FeatureSearch &search) {
    matchCount = matchFeatures(grid, other, choice.motion, reference.levelOfSide(search.longerSide),
                               search.radius, matches);
    const size_t count = static_cast<size_t>(matchCount);
    std::array<Observation, kFeatureCapacity> observations;
    for (size_t i = 0; i < count; i++)
        observations[i] = matches[i].observation;
    if (search.most == MotionKind::similarity)
        choice.motion = consensusSimilarity(choice.motion, observations.data(), count, kFeatureTolerance);
    choice =
        chooseMotion(search.most, choice, observations.data(), count, kFeatureTolerance, kFeatureTolerance);
}

int MotionSearch::passes() const {
    if (!comparable)
        return 0;
    return reference.levelOfSide(LumaPyramid::kLongestKeptSide) > 0 ? 2 : 1;
}

void MotionSearch::measureBatch(int pass, int batch) {
    if (batch == 0) {
        for (size_t i = 0; i < blocks.size(); i++)
            wanted[i] = pass == 0 || blocks[i].isInformative();
        std::fill(blocks.begin(), blocks.end(), Observation{});
    }
    const int level = pass + 1 < passes() ? reference.levelOfSide(LumaPyramid::kLongestKeptSide) : 0;
    measureBlocks(reference, other, layout, layout.count() * batch / kBatches,
                  layout.count() * (batch + 1) / kBatches, level, warpField, wanted.data(), blocks.data());
}

HdrStatus MotionSearch::finishPass() {
    const Observation *end = std::copy_if(blocks.begin(), blocks.end(), found.begin(),
                                          [](const Observation &block) { return block.isInformative(); });
    foundCount = static_cast<size_t>(end - found.begin());
    choice = chooseMotion(MotionKind::homography, choice, found.data(), foundCount, kFirstBlockTolerance,
                          kBlockTolerance);
    const double limit =
        kDeviationLimit + kDeviationLimitShare * std::max(reference.width(0), reference.height(0));
    return warpField.follow(memory, choice.motion, found.data(), foundCount, limit);
}

double MotionSearch::comparableShare() const {
    const int level = reference.levelOfSide(kComparedSide);
    const Plane<const uint8_t> own = reference.level(level), others = other.level(level);
    int64_t shared = 0;
    for (int y = 0; y < own.height; y++)
        for (int x = 0; x < own.width; x++)
            shared += isMeasured(own(x, y)) && isMeasured(others(x, y));
    return static_cast<double>(shared) / (static_cast<double>(own.width) * own.height);
}

bool MotionSearch::isBelievable(int trustedMatches) const {
    return !comparable ||
           (choice.explained >= kFewestBlocks &&
            choice.explained >= kBlockShare * static_cast<double>(foundCount)) ||
           featuresExplained >= trustedMatches || wholePictureCorrelation >= kTrustedCorrelation;
}

void MotionSearch::recordMatches(float *table) const {
    std::fill_n(table, 2 * kFeatureCapacity, kNoMatch);
    std::fill_n(table + 2 * kFeatureCapacity, kFeatureCapacity, 0.0f);
    for (int i = 0; i < matchCount; i++) {
        const FeatureMatch &match = matches[static_cast<size_t>(i)];
        const Observation &seen = match.observation;
        const Vector place =
            grid.features[static_cast<size_t>(match.feature)] - (1.0 / kReduction) * seen.displacement;
        const double deviation = seen.squaredDeviation(warpField.displacement(seen.position));
        table[match.feature] = static_cast<float>(place.x);
        table[kFeatureCapacity + match.feature] = static_cast<float>(place.y);
        table[2 * kFeatureCapacity + match.feature] =
            deviation < kFeatureTolerance * kFeatureTolerance ? 1.0f : 0.0f;
    }
}

} // namespace hdr
