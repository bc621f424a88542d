#pragma once

#include "ui/dashboard/CloseToTray.h"
#include "ui/texts/CompactPanel.h"

#include <QWidget>

class QMenu;

namespace vesk {

class CompactPanelView;
class WindowVisibility;

/// The one regular window: the rack panel on a dark ground. A closed one waits where CloseToTray
/// says.
class DashboardWindow final : public QWidget {
    Q_OBJECT

public:
    DashboardWindow();

    /// The rack panel.
    [[nodiscard]] CompactPanelView& panel() const noexcept { return *panel_; }

    /// Whether a person can see any of the window now.
    [[nodiscard]] bool isVisibleToUser() const;

    /// Whether the tray shows the item, which brings a hidden window back.
    void setTrayPresent(bool present);

    /// Shows the window, in front of the others and with the keyboard.
    void bringToFront();

    /// Does so where the window is hidden or minimised: what hangs on it would not be seen.
    void reveal();

    /// What the window's menu offers; the entries belong to others and outlive the window.
    void setMenuEntries(const QList<QAction*>& entries);

    [[nodiscard]] QMenu& menu() const noexcept { return *menu_; }

    /// Opens the menu as for a person at the keyboard.
    void openMenu();

signals:
    /// It may be painted next: what nobody saw until now must be right.
    void mayBeSeen();

    void visibilityChanged();

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    void centre();
    void followScreens();
    void minimize();
    void keepReachable();

    CompactPanelView* panel_;
    QMenu* menu_;
    WindowVisibility* visibility_;
    CloseToTray closeToTray_;
};

} // namespace vesk
