#pragma once

#include "ui/kit/TextView.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QAccessibleActionInterface>
#include <QLabel>
#include <QMetaEnum>

#include <algorithm>
#include <optional>

namespace vesk {

/// The button among `window`'s that is shown to a person under `name`, or null. Hidden ones count.
[[nodiscard]] inline QAbstractButton* buttonNamed(const QWidget& window, const QString& name) {
    for (auto* button : window.findChildren<QAbstractButton*>()) {
        auto* accessible = QAccessible::queryAccessibleInterface(button);
        if (accessible != nullptr && accessible->text(QAccessible::Name) == name) {
            return button;
        }
    }
    return nullptr;
}

/// What `widget` says, where it is a label of any kind.
[[nodiscard]] inline std::optional<QString> labelText(const QWidget& widget) {
    if (const auto* view = qobject_cast<const TextView*>(&widget)) {
        return view->text();
    }
    if (const auto* label = qobject_cast<const QLabel*>(&widget)) {
        return label->text();
    }
    return std::nullopt;
}

/// The texts of the labels that a person sees in `window`, top to bottom.
[[nodiscard]] inline QStringList labelTexts(const QWidget& window) {
    QList<QWidget*> labels;
    for (auto* widget : window.findChildren<QWidget*>()) {
        if (labelText(*widget) && widget->isVisibleTo(&window)) {
            labels.append(widget);
        }
    }
    std::stable_sort(labels.begin(), labels.end(), [&window](QWidget* one, QWidget* other) {
        return one->mapTo(&window, QPoint()).y() < other->mapTo(&window, QPoint()).y();
    });
    QStringList texts;
    for (const QWidget* label : labels) {
        texts.append(*labelText(*label));
    }
    return texts;
}

/// Where `widget` is in its window.
[[nodiscard]] inline QRect placeOf(const QWidget& widget) {
    return {widget.mapTo(widget.window(), QPoint()), widget.size()};
}

/// How much blank is between two widgets of which the second is below the first.
[[nodiscard]] inline int gapBelow(const QWidget& upper, const QWidget& lower) {
    return placeOf(lower).top() - placeOf(upper).bottom() - 1;
}

/// The same where the second is beside the first.
[[nodiscard]] inline int gapBeside(const QWidget& left, const QWidget& right) {
    return placeOf(right).left() - placeOf(left).right() - 1;
}

/// How a label is written: "23 DemiBold #ffffff".
[[nodiscard]] inline QString writingOf(const QWidget& label) {
    const QFont font = label.font();
    const auto weight = QMetaEnum::fromType<QFont::Weight>().valueToKey(font.weight());
    return QString::number(font.pixelSize()) + QLatin1Char(' ') + QString::fromLatin1(weight)
           + QLatin1Char(' ') + label.palette().color(label.foregroundRole()).name();
}

/// What assistive technology does with a check box or a radio button: no click comes of it.
inline void toggleAccessibly(QWidget& widget) {
    QAccessible::queryAccessibleInterface(&widget)->actionInterface()->doAction(
        QAccessibleActionInterface::toggleAction());
}

} // namespace vesk
