#pragma once

#include "tests/simulation/world/ScreenTexts.h"

#include "ui/kit/Sheet.h"

#include <QList>
#include <QPointer>

class QAbstractButton;
class QCheckBox;
class QLabel;
class QPushButton;
class QWidget;

namespace vesk {

class Alert;
class DashboardWindow;
class ElidedLabel;
class Lamp;
class Meter;
class Segment;

/// The program's windows as a person finds them.
class Screen {
public:
    /// The settings sheet while it is open.
    struct Settings {
        QPointer<Sheet> sheet;
        QList<Segment*> modes;
        QPushButton* done = nullptr;
        ElidedLabel* thermal = nullptr;
        ElidedLabel* performance = nullptr;
    };

    /// The setup sheet while it is open.
    struct Setup {
        QPointer<Sheet> sheet;
        QList<Segment*> modes;
        QPushButton* next = nullptr;
        QPushButton* back = nullptr;
        QPushButton* skip = nullptr;
        QPushButton* startCheck = nullptr;
        QCheckBox* deep = nullptr;
        QCheckBox* login = nullptr;
        ElidedLabel* step = nullptr;
    };

    /// Looks the program's windows up; they exist from before until after this.
    Screen();

    /// Looks which sheets and alerts are open now.
    void look();

    [[nodiscard]] ScreenTexts read() const;

    /// Some of the window can be seen, as the desktop tells.
    [[nodiscard]] bool windowSeen() const;

    /// The window is shown and not really minimised.
    [[nodiscard]] bool windowShown() const;

    [[nodiscard]] QWidget& window() const;
    [[nodiscard]] QPushButton& start() const { return *start_; }
    [[nodiscard]] QCheckBox& toggle() const { return *toggle_; }
    [[nodiscard]] QPushButton& settingsButton() const { return *settingsButton_; }
    [[nodiscard]] QPushButton& setupButton() const { return *setupButton_; }
    [[nodiscard]] const Settings* settings() const;
    [[nodiscard]] const Setup* setup() const;
    [[nodiscard]] const QList<Alert*>& alerts() const { return alerts_; }

    /// The one that takes what a person does: what lies over all others. None where none is shown.
    [[nodiscard]] QWidget* front() const;

private:
    void findPanel();
    [[nodiscard]] PanelTexts readPanel() const;
    [[nodiscard]] QString blockedWithKeys() const;
    void meetSettings(Sheet& sheet);
    void meetSetup(Sheet& sheet);

    DashboardWindow* window_ = nullptr;
    Lamp* lamp_ = nullptr;
    ElidedLabel* status_ = nullptr;
    ElidedLabel* rack_ = nullptr;
    ElidedLabel* devices_ = nullptr;
    ElidedLabel* summary_ = nullptr;
    QList<ElidedLabel*> rows_;
    QList<Meter*> meters_;
    QPushButton* start_ = nullptr;
    QPushButton* settingsButton_ = nullptr;
    QPushButton* setupButton_ = nullptr;
    QCheckBox* toggle_ = nullptr;
    Settings settings_;
    Setup setup_;
    QList<Alert*> alerts_;
};

} // namespace vesk
