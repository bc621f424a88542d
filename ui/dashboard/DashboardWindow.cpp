#include "ui/dashboard/DashboardWindow.h"

#include "ui/dashboard/CompactPanelView.h"
#include "ui/dashboard/WindowVisibility.h"
#include "ui/kit/Accessibility.h"
#include "ui/kit/ViewKit.h"

#include <QCloseEvent>
#include <QScreen>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr QSize usualSize(720, 390);
constexpr QSize smallestSize(650, 365);

} // namespace

DashboardWindow::DashboardWindow()
    : panel_(new CompactPanelView), visibility_(new WindowVisibility(*this)) {
    setAccessibleRole(*this, QAccessible::Window);
    setWindowTitle(u"Corvala for Mac · Halvex"_s);
    pin(panel_, this);
    // A system font with tall lines must not be cut off below.
    setMinimumSize(smallestSize.expandedTo(minimumSizeHint()));
    resize(usualSize);
    centre();
    // Until a person uses the keyboard, no control has it: a stray key must not pause anything.
    setFocus();
    connect(visibility_, &WindowVisibility::changed, this, &DashboardWindow::visibilityChanged);
}

bool DashboardWindow::isVisibleToUser() const {
    return visibility_->isWindowVisibleToUser();
}

void DashboardWindow::setReachableWhenHidden(bool reachable) {
    reachableWhenHidden_ = reachable;
    if (!reachable && isHidden() && testAttribute(Qt::WA_WState_ExplicitShowHide)) {
        // What could have brought it back is gone.
        showMinimized();
    }
}

void DashboardWindow::bringToFront() {
    if (isMinimized()) {
        setWindowState(windowState() & ~Qt::WindowMinimized);
    }
    show();
    raise();
    activateWindow();
}

void DashboardWindow::closeEvent(QCloseEvent* event) {
    event->ignore();
    if (reachableWhenHidden_) {
        hide();
    } else {
        showMinimized();
    }
}

void DashboardWindow::centre() {
    const QRect available = screen()->availableGeometry();
    move(available.center() - QRect(QPoint(), size()).center());
}

} // namespace vesk
