// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLoggingCategory>

namespace tristop {

/// What the application tells those who run it from a terminal.
Q_DECLARE_LOGGING_CATEGORY(lcTristop)

} // namespace tristop
