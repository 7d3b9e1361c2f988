// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/application_icon.h"

#include <QDirIterator>

namespace tristop {

QIcon applicationIcon() {
    QIcon icon;
    QDirIterator files(QStringLiteral(":/icon"));
    while (files.hasNext())
        icon.addFile(files.next());
    return icon;
}

} // namespace tristop
