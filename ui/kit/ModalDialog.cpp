#include "ui/kit/ModalDialog.h"

#include <QApplication>
#include <QWindow>

namespace vesk {

namespace {

/// The window that all between hang on.
const QWindow* standsOn(const QWindow& window) {
    const QWindow* last = &window;
    while (last->transientParent() != nullptr) {
        last = last->transientParent();
    }
    return last;
}

} // namespace

ModalDialog::ModalDialog(const QString& title, QWidget* parent) : QDialog(parent) {
    setWindowTitle(title);
    setWindowModality(Qt::WindowModal);
    connect(qApp, &QGuiApplication::focusWindowChanged, this, &ModalDialog::claimKeyboard);
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
        // Not every platform gives it to anyone.
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

/// Where two dialogs hang on one window the toolkit hands it to that window, and a window manager
/// may hand it to any that is clicked on.
void ModalDialog::claimKeyboard(const QWindow* holder) {
    if (holder != nullptr && QApplication::activeModalWidget() == this
        && !windowHandle()->isAncestorOf(holder) && holder != windowHandle()
        && standsOn(*holder) == standsOn(*windowHandle())) {
        activateWindow();
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
