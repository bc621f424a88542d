#include "ui/kit/Sheet.h"

#include <QCloseEvent>
#include <QLayout>

#include <algorithm>

namespace vesk {

Sheet::Sheet(const QString& title, QSize size, QWidget* parent)
    : ModalDialog(title, parent), size_(size) {
    setMinimumSize(size);
    resize(size);
}

void Sheet::end() {
    done(Accepted);
}

void Sheet::reject() {
    emit dismissed();
}

bool Sheet::event(QEvent* event) {
    const bool handled = ModalDialog::event(event);
    if (event->type() == QEvent::LayoutRequest) {
        growToFit();
    }
    return handled;
}

void Sheet::closeEvent(QCloseEvent* event) {
    emit dismissed();
    event->setAccepted(isHidden());
}

void Sheet::showEvent(QShowEvent* event) {
    growToFit();
    ModalDialog::showEvent(event);
}

void Sheet::growToFit() {
    // A box layout's own minimum does not know how high a text gets that wraps.
    const int needed = layout()->totalHeightForWidth(width());
    setMinimumHeight(std::max(size_.height(), needed));
}

} // namespace vesk
