#pragma once

#include <QObject>
#include <QTimer>

namespace vesk {

/// Decides where a closed window waits: hidden while the tray item can bring it back, else
/// minimised. A tray host that goes usually returns soon (a panel restarts, the screen is locked),
/// so its absence counts only after 10 s. Main thread only.
class CloseToTray final : public QObject {
    Q_OBJECT

public:
    CloseToTray();

    /// Whether the tray shows the item now; not so at first.
    void setTrayPresent(bool present);

    /// The user closed the window.
    void close();

    /// The user or the program opened the window: it is not closed any more.
    void open();

    /// From close() to open().
    [[nodiscard]] bool isClosed() const noexcept { return closed_; }

    /// The window was activated or restored. The user opened it that way, except just after a
    /// request: a window manager that ignores minimizeRequested() shows the window and may activate
    /// it on its own, and a Wayland compositor may report focus while the window is being hidden.
    void noteAttention();

signals:
    void hideRequested();
    void minimizeRequested();

private:
    void place();

    bool closed_ = false;
    bool trayPresent_ = false;
    QTimer absence_;  ///< runs while the tray's absence does not count yet
    QTimer settling_; ///< runs while the window manager answers a request
};

} // namespace vesk
