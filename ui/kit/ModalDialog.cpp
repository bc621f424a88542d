#include "ui/kit/ModalDialog.h"

#include <QApplication>

namespace vesk {

ModalDialog::ModalDialog(const QString& title, QWidget* parent) : QDialog(parent) {
    setWindowTitle(title);
    setWindowModality(Qt::WindowModal);
}

void ModalDialog::done(int result) {
    const bool hadKeyboard = isActiveWindow();
    for (auto* dialog : findChildren<ModalDialog*>(Qt::FindDirectChildrenOnly)) {
        if (dialog->isVisible() && parentWidget() != nullptr) {
            dialog->hangOn(*parentWidget());
        }
    }
    QDialog::done(result);
    QWidget* next = QApplication::activeModalWidget();
    if (hadKeyboard && next != nullptr) {
        // A window manager gives it to the window that both hang on, which is blocked.
        next->activateWindow();
    }
}

void ModalDialog::comeAnew() {
    hangOn(*parentWidget());
    for (auto* dialog : findChildren<ModalDialog*>(Qt::FindDirectChildrenOnly)) {
        if (dialog->isVisible()) {
            dialog->comeAnew();
        }
    }
}

void ModalDialog::hangOn(QWidget& window) {
    const bool hadKeyboard = isActiveWindow();
    hide();
    // Shown again as a new window: of one that the toolkit knows as active it would not notice that
    // it becomes active again.
    destroy();
    setParent(&window, windowFlags());
    open();
    if (hadKeyboard) {
        activateWindow();
    }
}

} // namespace vesk
