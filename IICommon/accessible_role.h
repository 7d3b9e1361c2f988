// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAccessible>

class QWidget;

namespace tristop {

/// What a widget of our own is to assistive technology, where none of its base classes tells.
void setAccessibleRole(QWidget *widget, QAccessible::Role role);

} // namespace tristop
