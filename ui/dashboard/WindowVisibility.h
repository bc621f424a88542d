#pragma once

#include <QObject>
#include <QPointer>

#include <memory>

class QWidget;
class QWindow;

namespace vesk {

class NativeWindowState;

/// Tells whether a person can see any part of a top-level window: shown, not minimised, and not
/// fully covered as far as the window system tells.
class WindowVisibility final : public QObject {
    Q_OBJECT

public:
    /// `window` outlives this object or takes it along.
    explicit WindowVisibility(QWidget& window);
    WindowVisibility(const WindowVisibility&) = delete;
    WindowVisibility& operator=(const WindowVisibility&) = delete;
    ~WindowVisibility() override;

    [[nodiscard]] bool isWindowVisibleToUser() const;

    /// Whether Qt shows the window, but the window manager does not: minimised, on another
    /// workspace, or put away to show the desktop.
    [[nodiscard]] bool isPutAway() const;

    /// Whether the window is put away and only a new native window would be shown to the user.
    [[nodiscard]] bool needsRecreation() const;

    /// Whether the window system minimises only a window that it has shown: of another one it shows
    /// the user nothing, not in a list of windows either.
    [[nodiscard]] static bool minimizesOnlyShownWindows();

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    /// It may be painted next, perhaps for the first time since it was seen last.
    void mayBeSeen();

    void changed();

private:
    [[nodiscard]] bool isMinimized() const;
    void watchHandle();
    void noteChange();

    QWidget& window_;
    QPointer<QWindow> handle_;
    std::unique_ptr<NativeWindowState> native_;
    bool lastKnown_ = false;
};

} // namespace vesk
