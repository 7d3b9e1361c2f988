// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "engine/hdr_engine.h"

namespace tristop {

/// What an engine status means to a photographer.
std::string statusInWords(HdrStatus status);

/// Why a single exposure stands in for a merge.
std::string fallbackInWords(HdrFallback fallback);

} // namespace tristop
