#include "ui/dashboard/DashboardWindow.h"

#include "ui/dashboard/CompactPanelView.h"
#include "ui/dashboard/WindowVisibility.h"
#include "ui/kit/ModalDialog.h"
#include "ui/kit/ViewKit.h"
#include "ui/kit/WindowActivation.h"

#include <QAccessibleWidget>
#include <QCloseEvent>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QMenu>
#include <QScreen>
#include <QShortcut>
#include <QWindow>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr QSize usualSize(720, 390);
constexpr QSize smallestSize(650, 365);

/// As much of a window's upper edge as a person needs to take hold of it.
constexpr QSize handleSize(80, 20);

/// A window whose menu assistive technology can open, and finds while it is open.
class WindowInterface final : public QAccessibleWidget {
public:
    explicit WindowInterface(DashboardWindow* window)
        : QAccessibleWidget(window, QAccessible::Window), window_(window) {}

    [[nodiscard]] QStringList actionNames() const override {
        return QAccessibleWidget::actionNames() + QStringList{showMenuAction()};
    }

    void doAction(const QString& name) override {
        if (name == showMenuAction()) {
            window_->openMenu();
        } else {
            QAccessibleWidget::doAction(name);
        }
    }

    [[nodiscard]] int childCount() const override {
        return QAccessibleWidget::childCount() + (window_->menu().isVisible() ? 1 : 0);
    }

    [[nodiscard]] QAccessibleInterface* child(int index) const override {
        return index == QAccessibleWidget::childCount()
                   ? QAccessible::queryAccessibleInterface(&window_->menu())
                   : QAccessibleWidget::child(index);
    }

    [[nodiscard]] int indexOfChild(const QAccessibleInterface* child) const override {
        return child != nullptr && child->object() == &window_->menu()
                   ? QAccessibleWidget::childCount()
                   : QAccessibleWidget::indexOfChild(child);
    }

private:
    DashboardWindow* window_;
};

QAccessibleInterface* makeInterface(const QString& /*className*/, QObject* object) {
    auto* window = qobject_cast<DashboardWindow*>(object);
    return window != nullptr ? new WindowInterface(window) : nullptr;
}

} // namespace

DashboardWindow::DashboardWindow()
    : panel_(new CompactPanelView),
      menu_(new QMenu(this)),
      visibility_(new WindowVisibility(*this)) {
    // The toolkit keeps each factory once, however often it is installed.
    QAccessible::installFactory(makeInterface);
    setWindowTitle(u"Corvala for Mac · Halvex"_s);
    pin(panel_, *this);
    // A system font with tall lines must not be cut off below.
    setMinimumSize(smallestSize.expandedTo(minimumSizeHint()));
    resize(usualSize);
    centre();
    // Until a person uses the keyboard, no control has it: a stray key must not pause anything.
    setFocus();
    connect(&closeToTray_, &CloseToTray::hideRequested, this, &QWidget::hide);
    connect(&closeToTray_, &CloseToTray::minimizeRequested, this, &DashboardWindow::minimize);
    connect(visibility_, &WindowVisibility::mayBeSeen, this, &DashboardWindow::mayBeSeen);
    connect(visibility_, &WindowVisibility::changed, this, &DashboardWindow::visibilityChanged);
    // The toolkit itself knows the menu key only.
    auto* menuKey = new QShortcut(Qt::SHIFT | Qt::Key_F10, this);
    connect(menuKey, &QShortcut::activated, this, &DashboardWindow::openMenu);
    followScreens();
}

bool DashboardWindow::isVisibleToUser() const {
    return visibility_->isWindowVisibleToUser();
}

void DashboardWindow::setTrayPresent(bool present) {
    if (present && isActiveWindow() && isVisibleToUser()) {
        // The window manager ignored minimising it, and the user is at it.
        closeToTray_.open();
    }
    closeToTray_.setTrayPresent(present);
}

void DashboardWindow::bringToFront() {
    closeToTray_.open();
    if (isMinimized()) {
        setWindowState(windowState() & ~Qt::WindowMinimized);
    }
    const bool recreated = visibility_->needsRecreation();
    if (recreated) {
        hide();
    }
    keepReachable();
    show();
    for (auto* sheet : findChildren<ModalDialog*>(Qt::FindDirectChildrenOnly)) {
        if (recreated && sheet->isVisible()) {
            sheet->recreate();
        }
    }
    raise();
    ModalDialog::restoreAll(*this);
    auto* topmost = ModalDialog::topmostOn(*this);
    if (topmost == nullptr) {
        activateForUser(*this);
    } else if (recreated) {
        activateForUser(*topmost);
    } else {
        topmost->bringToFront();
    }
}

void DashboardWindow::reveal() {
    closeToTray_.open();
    if (!isVisible() || visibility_->isPutAway()) {
        bringToFront();
    }
    ModalDialog::restoreAll(*this);
}

void DashboardWindow::setMenuEntries(const QList<QAction*>& entries) {
    menu_->clear();
    menu_->addActions(entries);
}

void DashboardWindow::openMenu() {
    const QWidget* holder = focusWidget() != nullptr ? focusWidget() : this;
    menu_->popup(holder->mapToGlobal(holder->rect().center()));
}

void DashboardWindow::contextMenuEvent(QContextMenuEvent* event) {
    menu_->popup(event->globalPos());
}

void DashboardWindow::closeEvent(QCloseEvent* event) {
    event->ignore();
    closeToTray_.close();
}

void DashboardWindow::changeEvent(QEvent* event) {
    const bool activated = event->type() == QEvent::ActivationChange && isActiveWindow();
    const bool restored =
        event->type() == QEvent::WindowStateChange && !isMinimized()
        && (static_cast<const QWindowStateChangeEvent*>(event)->oldState() & Qt::WindowMinimized);
    if (activated || restored) {
        closeToTray_.noteAttention();
    }
    QWidget::changeEvent(event);
}

void DashboardWindow::minimize() {
    if (isHidden() && WindowVisibility::minimizesOnlyShownWindows()) {
        const auto minimizeShown = [this] {
            if (closeToTray_.isClosed()) {
                showMinimized();
            }
        };
        connect(
            visibility_, &WindowVisibility::changed, this, minimizeShown, Qt::SingleShotConnection);
        show();
        return;
    }
    // Some window managers (i3) ignore the minimising and would activate a window that comes
    // unasked. Qt reads WA_ShowWithoutActivating only when it creates the window, this each time.
    constexpr auto withoutActivating = "_q_showWithoutActivating";
    if (windowHandle() != nullptr) {
        windowHandle()->setProperty(withoutActivating, true);
    }
    showMinimized();
    windowHandle()->setProperty(withoutActivating, false);
}

void DashboardWindow::followScreens() {
    const auto follow = [this](const QScreen* screen) {
        connect(
            screen, &QScreen::availableGeometryChanged, this, &DashboardWindow::keepReachable,
            Qt::QueuedConnection);
    };
    for (const QScreen* screen : QGuiApplication::screens()) {
        follow(screen);
    }
    connect(qGuiApp, &QGuiApplication::screenAdded, this, follow);
    connect(
        qGuiApp, &QGuiApplication::screenRemoved, this, &DashboardWindow::keepReachable,
        Qt::QueuedConnection);
}

void DashboardWindow::keepReachable() {
    const QRect frame = frameGeometry();
    const QRect edge(frame.topLeft(), QSize(frame.width(), handleSize.height()));
    for (const QScreen* screen : QGuiApplication::screens()) {
        const QRect seen = screen->availableGeometry() & edge;
        if (seen.width() >= handleSize.width() && seen.height() >= handleSize.height()) {
            return;
        }
    }
    centre();
}

void DashboardWindow::centre() {
    const QRect available = screen()->availableGeometry();
    move(available.center() - QRect(QPoint(), size()).center());
}

} // namespace vesk
