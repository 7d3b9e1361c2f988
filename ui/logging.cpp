// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/logging.h"

namespace tristop {

// Steps that only matter for a closer look are told when the rules ask for them.
Q_LOGGING_CATEGORY(lcTristop, "tristop", QtInfoMsg)

} // namespace tristop
