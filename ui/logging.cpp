// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/logging.h"

namespace tristop {

Q_LOGGING_CATEGORY(lcTristop, "tristop")

} // namespace tristop
