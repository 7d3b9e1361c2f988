// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/localized_text.h"

#include <QCoreApplication>

namespace tristop {

QString localizedText(const char *key) {
    QString text = qtTrId(key);
    // An untranslated key comes back as itself.
    return text == QLatin1String(key) ? QString() : text;
}

} // namespace tristop
