// SPDX-License-Identifier: GPL-3.0-or-later
#include "IICommon/accessible_role.h"

#include <QAccessibleWidget>
#include <QVariant>
#include <QWidget>

namespace tristop {

namespace {

constexpr char kRoleProperty[] = "accessibleRole";

QAccessibleInterface *interfaceWithRole(const QString &, QObject *object) {
    auto *widget = qobject_cast<QWidget *>(object);
    if (!widget)
        return nullptr;
    const QVariant role = widget->property(kRoleProperty);
    if (!role.isValid())
        return nullptr;
    return new QAccessibleWidget(widget, static_cast<QAccessible::Role>(role.toInt()));
}

} // namespace

void setAccessibleRole(QWidget *widget, QAccessible::Role role) {
    static const bool installed = (QAccessible::installFactory(interfaceWithRole), true);
    Q_UNUSED(installed);
    widget->setProperty(kRoleProperty, static_cast<int>(role));
}

} // namespace tristop
