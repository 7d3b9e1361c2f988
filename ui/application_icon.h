// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QIcon>

namespace tristop {

/// The application's icon in every size it was rendered in.
QIcon applicationIcon();

} // namespace tristop
