#pragma once

#include <QAccessible>

class QWidget;

namespace vesk {

/// Tells assistive technology what `view` is, where its class alone would not.
void setAccessibleRole(QWidget& view, QAccessible::Role role);

} // namespace vesk
