#include "ui/kit/ModalDialog.h"

#include "ui/kit/TransientParent.h"
#include "ui/kit/WindowActivation.h"

#include <QApplication>
#include <QEvent>
#include <QWindow>

#include <algorithm>
#include <utility>

namespace vesk {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// The time within which a window that may have focus has got it.
constexpr auto patience = 200ms;

/// The number of re-creations in a row after which the dialog did not keep focus. More do not
/// follow: a window manager may take focus from each new window.
constexpr int mostInVain = 3;

/// macOS keeps a sheet on its window; focus is late there while a restored window is animated.
bool windowSystemMayRefuseFocus() {
    return QGuiApplication::platformName() != "cocoa"_L1;
}

} // namespace

ModalDialog::ModalDialog(const QString& title, QWidget* parent)
    : QDialog(parent), focusCheck_(this) {
    setWindowTitle(title);
    setWindowModality(Qt::WindowModal);
    focusCheck_.setSingleShot(true);
    focusCheck_.setInterval(patience);
    connect(&focusCheck_, &QTimer::timeout, this, &ModalDialog::checkFocus);
    connect(qApp, &QGuiApplication::focusWindowChanged, this, &ModalDialog::takeFocusFrom);
}

ModalDialog* ModalDialog::topmostOn(const QWidget& window) {
    auto* dialog = qobject_cast<ModalDialog*>(QApplication::activeModalWidget());
    return window.findChildren<ModalDialog*>().contains(dialog) ? dialog : nullptr;
}

void ModalDialog::restoreAll(const QWidget& window) {
    for (auto* dialog : window.findChildren<ModalDialog*>()) {
        if (dialog->isVisible() && dialog->isMinimized()) {
            dialog->setWindowState(dialog->windowState() & ~Qt::WindowMinimized);
        }
    }
}

void ModalDialog::bringToFront() {
    raise();
    recreatedInVain_ = 0;
    requestFocus(Request::ByUser);
}

void ModalDialog::done(int result) {
    const bool hadFocus = isActiveWindow();
    for (auto* dialog : findChildren<ModalDialog*>(Qt::FindDirectChildrenOnly)) {
        if (dialog->isVisible() && parentWidget() != nullptr) {
            dialog->reparent(*parentWidget());
        }
    }
    QDialog::done(result);
    auto* next = qobject_cast<ModalDialog*>(QApplication::activeModalWidget());
    if (next == nullptr) {
        return;
    }
    if (hadFocus) {
        // Not every window system activates another window by itself.
        next->activateWindow();
    } else {
        // A window that both dialogs block may have it, where this one was refused focus.
        next->takeFocusFrom(QGuiApplication::focusWindow());
    }
}

void ModalDialog::recreate() {
    reparent(*parentWidget());
    for (auto* dialog : findChildren<ModalDialog*>(Qt::FindDirectChildrenOnly)) {
        if (dialog->isVisible()) {
            dialog->recreate();
        }
    }
}

bool ModalDialog::event(QEvent* event) {
    const bool handled = QDialog::event(event);
    if (event->type() == QEvent::WindowActivate && recreatedInVain_ > 0) {
        focusCheck_.start();
    }
    return handled;
}

/// Qt does not know the topmost of two dialogs on one window, and a window manager may give focus
/// to any window that the user clicks on.
void ModalDialog::takeFocusFrom(const QWindow* focused) {
    if (focused != nullptr && QApplication::activeModalWidget() == this && blocks(*focused)) {
        requestFocus(Request::ByFocus);
    }
}

bool ModalDialog::blocks(const QWindow& window) const {
    return &window != windowHandle() && !windowHandle()->isAncestorOf(&window)
           && &rootTransientParent(window) == &rootTransientParent(*windowHandle());
}

void ModalDialog::requestFocus(Request request) {
    request_ = std::max(request_, request);
    // Requests that follow each other by themselves must not put the check off for good.
    if (request == Request::ByUser || !focusCheck_.isActive()) {
        focusCheck_.start();
    }
    if (request == Request::ByUser) {
        activateForUser(*this);
    } else {
        activateWindow();
    }
}

void ModalDialog::checkFocus() {
    const Request request = std::exchange(request_, Request::None);
    if (isActiveWindow()) {
        recreatedInVain_ = 0;
    } else if (isRefused(request) && recreatedInVain_ < mostInVain) {
        ++recreatedInVain_;
        recreate();
        activateWindow();
    }
}

/// Whether the user is at this application, or wants to be, and the topmost dialog has no focus.
bool ModalDialog::isRefused(Request request) const {
    if (!windowSystemMayRefuseFocus() || QApplication::activeModalWidget() != this) {
        return false;
    }
    const QWindow* focused = QGuiApplication::focusWindow();
    if (focused == nullptr) {
        return request == Request::ByUser;
    }
    return request != Request::None && blocks(*focused)
           && (request == Request::ByUser || !isMinimized());
}

void ModalDialog::reparent(QWidget& parent) {
    const bool hadFocus = isActiveWindow();
    hide();
    // Qt does not notice that a window becomes active which it knows as active already.
    destroy();
    setParent(&parent, windowFlags());
    open();
    if (hadFocus) {
        activateWindow();
    }
}

} // namespace vesk
