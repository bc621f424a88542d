#include "ui/kit/KeyboardKeeper.h"

#include <QWidget>

namespace vesk {

bool KeyboardKeeper::setEnabled(QWidget& view, bool enabled) {
    if (enabled == view.isEnabled()) {
        return false;
    }
    if (!enabled) {
        QWidget* holder = view.window()->focusWidget();
        owed_ = holder == &view || view.isAncestorOf(holder);
        if (owed_) {
            holder->clearFocus();
        }
    }
    view.setEnabled(enabled);
    return enabled && owed_ && view.window()->focusWidget() == nullptr;
}

} // namespace vesk
