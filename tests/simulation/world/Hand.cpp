#include "Hand.h"

#include "tests/simulation/VirtualTime.h"

#include <QKeySequence>
#include <QMenu>
#include <QPoint>
#include <QPointer>
#include <QWidget>
#include <QWindow>

#include <qpa/qwindowsysteminterface.h>

namespace vesk::hand {

namespace {

using Interface = QWindowSystemInterface;
using AtOnce = QWindowSystemInterface::SynchronousDelivery;

ulong timestamp() {
    const auto now = VirtualTime::instance().now().time_since_epoch();
    return static_cast<ulong>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

QString textOf(Qt::Key key) {
    switch (key) {
    case Qt::Key_Space:
        return QStringLiteral(" ");
    case Qt::Key_Return:
        return QStringLiteral("\r");
    default:
        return {};
    }
}

} // namespace

void click(const QWidget& control) {
    constexpr int edge = 10;
    clickAt(*control.window(), control.mapTo(control.window(), QPoint(edge, control.height() / 2)));
}

void clickAt(const QWidget& window, const QPoint& place) {
    const QPointer<QWindow> handle(window.windowHandle());
    const QPoint global = window.mapToGlobal(place);
    if (qobject_cast<const QMenu*>(&window) != nullptr) {
        // QMenu ignores a click near the place where it opened unless the pointer moved at least
        // seven times.
        constexpr int motions = 10;
        for (int motion = 0; motion < motions; ++motion) {
            const QPoint step(motion % 2, 0);
            Interface::handleMouseEvent<AtOnce>(
                handle, timestamp(), place + step, global + step, Qt::NoButton, Qt::NoButton,
                QEvent::MouseMove);
        }
    }
    Interface::handleMouseEvent<AtOnce>(
        handle, timestamp(), place, global, Qt::LeftButton, Qt::LeftButton,
        QEvent::MouseButtonPress);
    if (handle) {
        Interface::handleMouseEvent<AtOnce>(
            handle, timestamp(), place, global, Qt::NoButton, Qt::LeftButton,
            QEvent::MouseButtonRelease);
    }
}

void press(const QWidget& window, Qt::Key key, Qt::KeyboardModifiers modifiers) {
    const QPointer<QWindow> handle(window.windowHandle());
    const QString text = modifiers == Qt::NoModifier ? textOf(key) : QString();
    Interface::handleKeyEvent<AtOnce>(handle, timestamp(), QEvent::KeyPress, key, modifiers, text);
    if (handle) {
        Interface::handleKeyEvent<AtOnce>(
            handle, timestamp(), QEvent::KeyRelease, key, modifiers, text);
    }
}

void close(const QWidget& window) {
    Interface::handleCloseEvent<AtOnce>(window.windowHandle());
}

} // namespace vesk::hand
