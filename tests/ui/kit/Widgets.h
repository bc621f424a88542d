#pragma once

#include <QAbstractButton>
#include <QAccessible>
#include <QAccessibleActionInterface>
#include <QLabel>

#include <algorithm>

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

/// The texts of the labels that a person sees in `window`, top to bottom.
[[nodiscard]] inline QStringList labelTexts(const QWidget& window) {
    QList<QLabel*> labels;
    for (auto* label : window.findChildren<QLabel*>()) {
        if (label->isVisibleTo(&window)) {
            labels.append(label);
        }
    }
    std::stable_sort(labels.begin(), labels.end(), [&window](QLabel* one, QLabel* other) {
        return one->mapTo(&window, QPoint()).y() < other->mapTo(&window, QPoint()).y();
    });
    QStringList texts;
    for (const QLabel* label : labels) {
        texts.append(label->text());
    }
    return texts;
}

/// What assistive technology does with a check box or a radio button: no click comes of it.
inline void toggleAccessibly(QWidget& widget) {
    QAccessible::queryAccessibleInterface(&widget)->actionInterface()->doAction(
        QAccessibleActionInterface::toggleAction());
}

} // namespace vesk
