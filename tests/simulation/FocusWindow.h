#pragma once

#include <qpa/qwindowsysteminterface.h>

namespace vesk {

/// Delivers at once that the platform gave focus to `window`, or to no window of the program. Not
/// refused as QWindow::requestActivate() may be.
inline void setFocusWindow(QWindow* window) {
    using AtOnce = QWindowSystemInterface::SynchronousDelivery;
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
    QWindowSystemInterface::handleFocusWindowChanged<AtOnce>(window);
#else
    QWindowSystemInterface::handleWindowActivated<AtOnce>(window);
#endif
}

} // namespace vesk
