#pragma once

#include "ui/texts/CompactPanel.h"

#include <QWidget>

namespace vesk {

class CompactPanelView;
class WindowVisibility;

/// The one regular window: the rack panel on a dark ground. Closing hides it where the tray item
/// can bring it back, and minimises it elsewhere.
class DashboardWindow final : public QWidget {
    Q_OBJECT

public:
    DashboardWindow();

    /// The rack panel.
    [[nodiscard]] CompactPanelView& panel() const noexcept { return *panel_; }

    /// Whether a person can see any of the window now.
    [[nodiscard]] bool isVisibleToUser() const;

    /// Whether something else can bring a hidden window back.
    void setReachableWhenHidden(bool reachable);

    /// Shows the window, in front of the others and with the keyboard.
    void bringToFront();

signals:
    void visibilityChanged();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void centre();

    CompactPanelView* panel_;
    WindowVisibility* visibility_;
    bool reachableWhenHidden_ = false;
};

} // namespace vesk
