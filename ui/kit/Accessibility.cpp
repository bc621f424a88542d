#include "ui/kit/Accessibility.h"

#include <QAccessibleWidget>
#include <QVariant>
#include <QWidget>

namespace vesk {

namespace {

constexpr auto roleProperty = "veskAccessibleRole";

QAccessibleInterface* makeInterface(const QString& /*className*/, QObject* object) {
    auto* view = qobject_cast<QWidget*>(object);
    const QVariant role = object->property(roleProperty);
    return view != nullptr && role.isValid()
               ? new QAccessibleWidget(view, static_cast<QAccessible::Role>(role.toInt()))
               : nullptr;
}

} // namespace

void setAccessibleRole(QWidget& view, QAccessible::Role role) {
    // The toolkit keeps each factory once, however often it is installed.
    QAccessible::installFactory(makeInterface);
    view.setProperty(roleProperty, static_cast<int>(role));
}

} // namespace vesk
