#pragma once

#include <QObject>
#include <QPointer>

class QDialog;
class QLabel;
class QPushButton;

namespace vesk {

class ElidedLabel;
class SegmentedControl;
class SettingsController;
class Sheet;

/// The sheet in which a person picks how hard the machine works for the service. Made once, opened
/// as often as wanted. Main thread only.
class PerformanceSettings final : public QObject {
    Q_OBJECT

public:
    /// `control` must outlive this; `parentWindow` is what the sheet hangs on.
    PerformanceSettings(SettingsController& control, QWidget* parentWindow);
    PerformanceSettings(const PerformanceSettings&) = delete;
    PerformanceSettings& operator=(const PerformanceSettings&) = delete;
    ~PerformanceSettings() override;

    void open();

    /// Shows what the controller knows now.
    void refresh();

    void close();

    /// The sheet itself.
    [[nodiscard]] QDialog* window() const;

private:
    void changeMode();
    void modeChanged(bool confirmed);

    SettingsController& control_;
    QPointer<Sheet> window_; // may go with the window that it hangs on
    SegmentedControl* mode_;
    ElidedLabel* thermal_;
    ElidedLabel* performance_;
    QLabel* explanation_;
    QPushButton* done_;
    bool changing_ = false;
};

} // namespace vesk
