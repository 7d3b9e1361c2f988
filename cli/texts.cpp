// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/texts.h"

#include "engine/analysis/ghost_detection.h"

namespace tristop {

std::string statusInWords(HdrStatus status) {
    switch (status) {
    case HDR_OK:
        return "success";
    case HDR_ERR_PARAM:
        return "the pictures given to the engine are incomplete or do not fit together";
    case HDR_ERR_FORMAT:
        return "the engine does not handle this kind of picture";
    case HDR_ERR_NOMEM:
        return "there is not enough memory";
    case HDR_ERR_SHIFT:
        return "the photographs are too far apart to be merged";
    case HDR_CANCELLED:
        return "it was cancelled";
    case HDR_ERR_ALIGN:
        return "the photographs could not be aligned: they share too few details";
    case HDR_ERR_ORDER:
        return "the exposures are in the wrong order: the brightest is not the last";
    case HDR_WARN_25:
        return "it finished with a warning and gave no picture";
    default:
        return "the engine reported the unknown status " + std::to_string(status);
    }
}

std::string fallbackInWords(HdrFallback fallback) {
    switch (fallback) {
    case HDR_FALLBACK_NONE:
        return "the exposures were merged";
    case HDR_FALLBACK_SHIFT:
        return "an exposure is shifted by more than 64 pixels";
    case HDR_FALLBACK_FEATURES:
        return "an exposure shares too few details with the middle one to be aligned";
    case HDR_FALLBACK_BRIGHT_MOTION:
        return "the bright exposure differs over too much of the picture";
    case HDR_FALLBACK_DARK_MOTION:
        return "the dark exposure differs over too much of the picture";
    case HDR_FALLBACK_SINGLE_INPUT:
        return "only one picture was given";
    }
    return "the reason is unknown";
}

std::string motionInWords(int32_t motion) {
    switch (motion) {
    case 1:
        return "at most a shift";
    case 2:
        return "similarity: shifted, turned and scaled";
    default:
        return "homography: with perspective";
    }
}

std::string ghostModeInWords(int32_t mode) {
    switch (mode) {
    case hdr::kGhostsNone:
        return "nothing is replaced";
    case hdr::kGhostsReplaced:
        return "the cells of mask A are replaced";
    case hdr::kGhostsWithoutDark:
        return "the cells of mask C are replaced, the dark exposure is left out";
    default:
        return "unknown";
    }
}

std::string chromaModeInWords(int32_t mode) {
    switch (mode) {
    case hdr::kChromaAll:
        return "colour from all exposures";
    case hdr::kChromaWithoutDark:
        return "no colour from the dark exposure";
    case hdr::kChromaWithoutBright:
        return "no colour from the bright exposure";
    default:
        return "unknown";
    }
}

} // namespace tristop
