// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace tristop {

/// The product's pages on the net.
inline constexpr char kGuidePage[] = "https://tristop.org/guide";
inline constexpr char kFaqPage[] = "https://tristop.org/faq";
inline constexpr char kSupportPage[] = "https://tristop.org/support";

} // namespace tristop
