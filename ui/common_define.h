// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>

namespace tristop {

/// The application's colours for windows and views.
class CommonDefine {
public:
    /// Behind pictures and panels: a dark grey.
    static QColor backgroundColor();
    /// Around panels.
    static QColor borderColor();
};

} // namespace tristop
