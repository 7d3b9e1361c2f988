// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/image_item.h"

#include <QFileInfo>

namespace tristop {

QString IIImageItem::imageTitle() const {
    return QFileInfo(path).completeBaseName();
}

} // namespace tristop
