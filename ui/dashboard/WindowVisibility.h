#pragma once

#include <QObject>
#include <QPointer>

#include <memory>

class QWidget;
class QWindow;

namespace vesk {

class ObscuredWatch;

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

    /// Whether the window is shown where nobody sees it and the program cannot change that, unless
    /// it hides the window and shows it again.
    [[nodiscard]] bool comesBackOnlyAnew() const;

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    /// It may be painted next, perhaps for the first time since it was seen last.
    void mayBeSeen();

    void changed();

private:
    void watchHandle();
    void noteChange();

    QWidget& window_;
    QPointer<QWindow> handle_;
    std::unique_ptr<ObscuredWatch> obscured_;
    bool lastKnown_ = false;
};

} // namespace vesk
