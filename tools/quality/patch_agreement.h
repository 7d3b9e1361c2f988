// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/core/offscreen.h"
#include "tools/quality/bracket.h"

#include <functional>
#include <span>
#include <vector>

namespace tristop::quality {

inline constexpr int kPatch = 16;

/// Standard deviations of two pictures in a patch and their normalised correlation.
struct PatchComparison {
    double deviationA, deviationB, correlation;
};

/// Compares the patch of `a` with its top left pixel at (x, y) with the one of `b` displaced by (dx, dy).
PatchComparison comparePatch(const Luminance &a, const Luminance &b, int x, int y, int dx = 0, int dy = 0);

/// What one shot shows, without noise, seen from the reference: the only things that a picture without ghosts
/// can show. A merge bends tones, steeply where light meets shadow, and moves pixels by whole ones, so the
/// structure is given in several ways.
struct ShotContent {
    Luminance developed;  ///< as the camera develops it, with what it clips and crushes, 0 to 255
    Luminance light;      ///< the logarithm of the light, in stops
    Luminance merged;     ///< as the engine merges it where all three shots show it, 0 to 255
    Luminance photograph; ///< the photograph where a run brings its pixels; may be empty
};

/// The contents of the three shots: the scene as it was then, from where the reference stood.
std::array<ShotContent, 3> contentsOf(const scene::SceneSettings &settings, ViewCache &views);

/// How many patches of a picture show what one shot saw.
///
/// A patch agrees with a shot when the normalised correlation with its content is at least 0.75, the content
/// being where it is or one pixel beside it (alignment is to whole pixels, ghosts lie much further), or when
/// neither shows more than the noise. Patches in which no shot has texture do not count.
///
/// Correlation does not see how strong a structure is: a transparent object in front of a plain wall agrees.
/// So where a mix would show, because the shots have structures of different kind or strength there, the
/// patch is also asked to have a contrast like the one that the shot's content has in a merge without motion.
struct Agreement {
    int patches = 0;
    int agreeing = 0;
    int telling = 0; ///< patches where the shots differ
    int opaque = 0;  ///< of these, patches that agree with a shot in structure and contrast

    double share() const { return patches ? static_cast<double>(agreeing) / patches : 1; }
    double opaqueShare() const { return telling ? static_cast<double>(opaque) / telling : 1; }
};

/// Looks at the patches around the pixels that `where` picks from a lattice of half a patch, whole patches
/// inside `area` only.
Agreement patchAgreement(const Luminance &picture, std::span<const ShotContent> shots,
                         const std::function<bool(int x, int y)> &where, const hdr::Rect &area);

} // namespace tristop::quality
