#pragma once

#include "ui/kit/KeyboardKeeper.h"
#include "ui/texts/CompactPanel.h"

#include <QWidget>

#include <array>

class QCheckBox;
class QPushButton;

namespace vesk {

class ElidedLabel;
class Lamp;
class Meter;

/// The rack panel: what the window shows. It only shows a CompactPanel and says what was pressed.
class CompactPanelView final : public QWidget {
    Q_OBJECT

public:
    explicit CompactPanelView(QWidget* parent = nullptr);

    /// Touches only what differs from what is on screen.
    void show(const CompactPanel& panel);
    using QWidget::show;

signals:
    void startPressed();
    /// The person switched deep jobs, by mouse, keyboard or assistive technology.
    void toggleChanged(bool on);
    void setupPressed();
    void settingsPressed();

private:
    void setAvailable(QWidget& control, bool available);
    [[nodiscard]] QWidget* makeHeader();
    [[nodiscard]] QWidget* makeStatusBlock();
    [[nodiscard]] QWidget* makeRackBox();
    [[nodiscard]] QWidget* makeControls();

    Lamp* lamp_ = nullptr;
    ElidedLabel* compactStatus_ = nullptr;
    ElidedLabel* compactRack_ = nullptr;
    ElidedLabel* compactDevices_ = nullptr;
    ElidedLabel* compactSummary_ = nullptr;
    std::array<ElidedLabel*, CompactPanel::bays> compactRows_{};
    std::array<Meter*, CompactPanel::bays> compactMeters_{};
    QPushButton* compactStart_ = nullptr;
    QCheckBox* compactToggle_ = nullptr;
    KeyboardKeeper keyboard_;
};

} // namespace vesk
