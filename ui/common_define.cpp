// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/common_define.h"

namespace tristop {

QColor CommonDefine::backgroundColor() {
    return QColor::fromRgbF(0.12F, 0.12F, 0.12F);
}

QColor CommonDefine::borderColor() {
    return QColor::fromRgbF(1.0F / 3, 1.0F / 3, 1.0F / 3);
}

} // namespace tristop
