#include "ui/dashboard/WindowVisibility.h"

#include "ui/dashboard/NativeWindowState.h"

#include <QEvent>
#include <QGuiApplication>
#include <QWidget>
#include <QWindow>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

/// There a program can minimise its window but not bring it back, and is not told either: a window
/// that nobody sees is one whose last picture is not asked for.
bool isWayland() {
    return QGuiApplication::platformName().startsWith("wayland"_L1);
}

} // namespace

WindowVisibility::WindowVisibility(QWidget& window) : QObject(&window), window_(window) {
    window_.installEventFilter(this);
    watchHandle();
    if (isWayland()) {
        // It may have been minimised or covered: the fate of a new picture tells.
        connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, [this] {
            window_.update(0, 0, 1, 1);
        });
    }
}

WindowVisibility::~WindowVisibility() = default;

bool WindowVisibility::isWindowVisibleToUser() const {
    return window_.isVisible() && !isPutAway() && !(native_ && native_->isFullyObscured());
}

bool WindowVisibility::isPutAway() const {
    return window_.isVisible() && (isMinimized() || !handle_ || !handle_->isExposed());
}

bool WindowVisibility::needsRecreation() const {
    return isWayland() && isPutAway();
}

bool WindowVisibility::minimizesOnlyShownWindows() {
    return isWayland();
}

bool WindowVisibility::isMinimized() const {
    return native_ ? native_->isMinimized() : window_.isMinimized();
}

bool WindowVisibility::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::WinIdChange:
    case QEvent::Show:
        watchHandle();
        [[fallthrough]];
    case QEvent::Expose:
    case QEvent::WindowStateChange:
        if (window_.isVisible() && !isMinimized()) {
            emit mayBeSeen();
        }
        [[fallthrough]];
    case QEvent::Hide:
        // The toolkit has not settled the new state while it tells of it.
        QMetaObject::invokeMethod(this, &WindowVisibility::noteChange, Qt::QueuedConnection);
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

void WindowVisibility::watchHandle() {
    if (handle_ == window_.windowHandle()) {
        return;
    }
    handle_ = window_.windowHandle();
    native_.reset();
    if (handle_) {
        handle_->installEventFilter(this);
        native_ = NativeWindowState::make(*handle_, [this] { noteChange(); });
    }
}

void WindowVisibility::noteChange() {
    const bool visible = isWindowVisibleToUser();
    if (visible != lastKnown_) {
        lastKnown_ = visible;
        emit changed();
    }
}

} // namespace vesk
