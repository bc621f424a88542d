#pragma once

#include "tests/simulation/world/Chronicle.h"

#include <QMenu>
#include <QObject>
#include <QPointer>

#include <memory>

class QWidget;
class QWindow;

namespace vesk {

class HostedItem;
class TrayHost;

/// The desktop around the program: its places for tray items and what lies above its windows. The
/// program finds the only one by itself.
class SimulatedDesktop final : public QObject {
    Q_OBJECT

public:
    explicit SimulatedDesktop(Chronicle& chronicle);
    ~SimulatedDesktop() override;

    [[nodiscard]] static SimulatedDesktop& instance();

    [[nodiscard]] bool trayPresent() const noexcept { return trayPresent_; }

    /// The host comes or goes.
    void setTray(bool present);

    [[nodiscard]] bool covered() const noexcept { return covered_; }

    /// Other windows lie over all of the program's, or leave.
    void setCovered(bool covered);

    /// Whether the window manager minimises a window on request. Where it does not, Qt takes a
    /// window that asked for it for minimised, while it is in full sight.
    void setIgnoresMinimising(bool ignores);

    /// Whether a window is really minimised.
    [[nodiscard]] bool hasMinimised(const QWindow& window) const;

    /// The window manager minimises a window, or brings it back.
    void minimise(QWidget& window);
    void restore(QWidget& window);

    /// The window manager gives a window the keyboard, whatever lies over it.
    void giveKeyboard(QWidget& window);

    /// The window manager gives focus to none of the program's windows that ask for it, but to each
    /// new one; or to all again.
    void setRefusesFocus(bool refuses);
    [[nodiscard]] bool refusesFocus() const noexcept { return refusesFocus_; }

    /// The session hides all windows of the program, or shows them again.
    void setHidden(bool hidden);

    /// A machine that sleeps and wakes.
    void sleep(std::chrono::milliseconds duration);

    /// What the item says, and its menu; none without a place for it.
    [[nodiscard]] const QString& toolTip() const noexcept { return toolTip_; }
    [[nodiscard]] bool hasItem() const noexcept { return item_ != nullptr; }

    /// Also without a place for the item.
    [[nodiscard]] QMenu* menu() const;

    /// A person clicks on the item.
    void activateItem();

signals:
    void trayChanged();
    void coverChanged();
    void menuOpened();
    void menuClosed();

private:
    bool eventFilter(QObject* watched, QEvent* event) override;

    friend class SimulatedTrayHost;
    friend class SimulatedItem;

    Chronicle& chronicle_;
    bool trayPresent_ = true;
    bool covered_ = false;
    bool refusesFocus_ = false;
    bool ignoresMinimising_ = false;
    QString toolTip_;
    HostedItem* item_ = nullptr;
    QPointer<QMenu> menu_;
};

} // namespace vesk
