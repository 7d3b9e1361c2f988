// SPDX-License-Identifier: MIT
#include "engine/prepare/tone_correction.h"

#include "engine/core/buffer.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>

namespace hdr {

namespace {

constexpr int kLevels = 256;
/// Levels to both sides that count as one level.
constexpr int kPooled = 3;
/// Pixels that a level needs: this many, and one in this many of the picture.
constexpr uint32_t kFewestPixels = 32, kSmallestShare = 2000;
/// Share of a level's pixels, in percent, that must meet nearly the same level of the reference.
constexpr uint32_t kLeastAgreement = 60;
/// Differences from the matched table that are left alone, and the largest correction.
constexpr int kLeftAlone = 6, kLargestCorrection = 96;
/// Levels that must be sure before any is corrected.
constexpr int kFewestSure = 16;

/// Spread of a level in noise and at edges.
constexpr int tolerance(int level) {
    return 8 + level / 16;
}

/// How often each pair of levels meets.
class Comparagram {
public:
    explicit Comparagram(MemContext *memory) : counts(Buffer<uint32_t>::zeroed(memory, kLevels * kLevels)) {}
    bool ok() const { return static_cast<bool>(counts); }

    void add(int own, int reference) { counts[static_cast<size_t>(own * kLevels + reference)]++; }

    /// The reference's levels that meet the own levels around one, and the other way round. What meets a
    /// neighbouring level counts as far from that as it would meet the level itself.
    std::array<uint32_t, kLevels> metBy(int own) const { return pooled(own, kLevels, 1); }
    std::array<uint32_t, kLevels> meeting(int reference) const { return pooled(reference, 1, kLevels); }

private:
    std::array<uint32_t, kLevels> pooled(int level, int toNext, int along) const {
        std::array<uint32_t, kLevels> sums{};
        for (int k = std::max(level - kPooled, 0); k <= std::min(level + kPooled, kLevels - 1); k++)
            for (int i = 0; i < kLevels; i++)
                sums[static_cast<size_t>(std::clamp(i + level - k, 0, kLevels - 1))] +=
                    counts[static_cast<size_t>(k * toNext + i * along)];
        return sums;
    }

    Buffer<uint32_t> counts;
};

uint32_t total(const std::array<uint32_t, kLevels> &histogram) {
    return std::accumulate(histogram.begin(), histogram.end(), 0u);
}

int median(const std::array<uint32_t, kLevels> &histogram) {
    const uint32_t half = (total(histogram) + 1) / 2;
    uint32_t sum = 0;
    int level = 0;
    while ((sum += histogram[static_cast<size_t>(level)]) < half)
        level++;
    return level;
}

/// Where an own level belongs in the reference; -1 where that is not sure.
int counterpart(const Comparagram &comparagram, int own, uint32_t fewest) {
    const auto met = comparagram.metBy(own);
    const uint32_t count = total(met);
    if (count < fewest)
        return -1;
    const int level = median(met);
    uint32_t agreeing = 0;
    for (int i = std::max(level - tolerance(level), 0); i <= std::min(level + tolerance(level), kLevels - 1);
         i++)
        agreeing += met[static_cast<size_t>(i)];
    if (uint64_t{100} * agreeing < uint64_t{kLeastAgreement} * count)
        return -1;
    const int back = median(comparagram.meeting(level));
    // What is beyond the reference's range meets its last levels, and these meet many.
    const bool beyondRange = (level <= kFullyCrushed && own < back) || (level >= kFullyClipped && own > back);
    return beyondRange || std::abs(back - own) <= tolerance(own) ? level : -1;
}

} // namespace

HdrStatus correctTones(MemContext *memory, Plane<const uint8_t> reference, Plane<const uint8_t> own,
                       const Rect &valid, const uint8_t *matched, std::array<uint8_t, 256> &tones) {
    std::copy_n(matched, kLevels, tones.begin());
    Comparagram comparagram(memory);
    if (!comparagram.ok())
        return HDR_ERR_NOMEM;
    for (int y = valid.y0; y < valid.y1; y++)
        for (int x = valid.x0; x < valid.x1; x++)
            comparagram.add(own(x, y), reference(x, y));
    const uint32_t pixels = static_cast<uint32_t>(std::max(valid.x1 - valid.x0, 0)) *
                            static_cast<uint32_t>(std::max(valid.y1 - valid.y0, 0));
    const uint32_t fewest = std::max(kFewestPixels, pixels / kSmallestShare);

    std::array<int, kLevels> sure; // levels, in ascending order
    std::array<int, kLevels> correction;
    int count = 0;
    for (int level = 0; level < kLevels; level++) {
        const int target = counterpart(comparagram, level, fewest);
        if (target < 0)
            continue;
        const int difference = target - matched[level];
        const int size = std::clamp(std::abs(difference) - kLeftAlone, 0, kLargestCorrection);
        correction[static_cast<size_t>(level)] = difference < 0 ? -size : size;
        sure[static_cast<size_t>(count++)] = level;
    }
    if (count < kFewestSure)
        return HDR_OK;

    // Between sure levels the correction runs linearly; beyond them it stays.
    int next = 0;
    for (int level = 0; level < kLevels; level++) {
        while (next < count && sure[static_cast<size_t>(next)] < level)
            next++;
        const int above = sure[static_cast<size_t>(std::min(next, count - 1))];
        const int below = sure[static_cast<size_t>(std::max(next - 1, 0))];
        const int atBelow = correction[static_cast<size_t>(below)],
                  atAbove = correction[static_cast<size_t>(above)];
        const int here = level >= above || level <= below
                             ? (level >= above ? atAbove : atBelow)
                             : atBelow + (atAbove - atBelow) * (level - below) / (above - below);
        tones[static_cast<size_t>(level)] = static_cast<uint8_t>(std::clamp(matched[level] + here, 0, 255));
    }
    // What receives more light is not darker, whatever a smooth curve through few levels makes of it.
    std::partial_sum(tones.begin(), tones.end(), tones.begin(),
                     [](uint8_t before, uint8_t here) { return std::max(before, here); });
    return HDR_OK;
}

} // namespace hdr
