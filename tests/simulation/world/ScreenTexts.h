#pragma once

#include <QString>
#include <QStringList>

#include <array>
#include <optional>

namespace vesk {

/// The texts of the window and of the tray item.
struct PanelTexts {
    QString connection;
    QString status;
    QString detail;
    QString rack;
    QString devices;
    QString summary;
    std::array<QString, 3> rows;
    std::array<double, 3> meters{};
    QString start;
    bool startEnabled = true;
    Qt::CheckState toggle = Qt::PartiallyChecked;
    bool toggleEnabled = false;
    QString trayState;
    QString trayAction;
    bool trayActionEnabled = true;
    QString toolTip; ///< empty without an item
};

/// The texts of the open settings sheet.
struct SettingsTexts {
    int mode = 0;
    bool enabled = false;
    QString thermal;
    QString performance;
};

/// The texts of the open setup sheet.
struct SetupTexts {
    QString step;
    QString next;
    bool nextEnabled = true;
    bool choicesEnabled = true; ///< the two check boxes can be changed
    bool deep = false;
    bool login = false;
    QStringList paragraphs; ///< sorted
};

/// All that a person can read.
struct ScreenTexts {
    PanelTexts panel;
    std::optional<SettingsTexts> settings;
    std::optional<SetupTexts> setup;
    QStringList alerts;      ///< sorted
    bool windowShown = true; ///< and not minimised
    bool windowHidden = false;
    bool panelSeen = true;   ///< the window's own texts; nobody can read them else
    QString blockedWithKeys; ///< a window behind another that has the keyboard all the same
};

} // namespace vesk
