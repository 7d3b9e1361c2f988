// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>

#include "engine/hdr_engine.h"

namespace tristop {

/// What an engine status means to a photographer.
std::string statusInWords(HdrStatus status);

/// Why a single exposure stands in for a merge.
std::string fallbackInWords(HdrFallback fallback);

/// What motion of an exposure was found: 1 at most a shift, 2 a similarity, 3 a homography.
std::string motionInWords(int32_t motion);

/// What a ghost mode (hdr::GhostMode) does.
std::string ghostModeInWords(int32_t mode);

/// What a chroma mode (hdr::ChromaMode) does.
std::string chromaModeInWords(int32_t mode);

} // namespace tristop
