// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace tristop {

inline constexpr const char *kHdrDomain = "HDR_DOMAIN";

/// An error to tell the user.
struct HdrError {
    QString domain = kHdrDomain;
    int code = 1;
    QString localizedDescription;
    QString reason = {}; ///< what is known beyond that, in English, for the log
};

} // namespace tristop
