#include "ui/kit/KeyboardKeeper.h"

namespace vesk {

bool KeyboardKeeper::setEnabled(QWidget& view, bool enabled) {
    QWidget& window = *view.window();
    const QWidget* holder = window.focusWidget();
    if (!enabled && (holder == &view || view.isAncestorOf(holder))) {
        owedTo_ = &view;
        // A window that nothing in has the keyboard would give it to its first control as soon as
        // it becomes active again.
        window.setFocus();
    }
    view.setEnabled(enabled);
    if (!enabled || owedTo_ != &view) {
        return false;
    }
    owedTo_.clear();
    return window.focusWidget() == &window;
}

} // namespace vesk
