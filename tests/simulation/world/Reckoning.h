#pragma once

#include "tests/simulation/world/ScreenTexts.h"

#include <QJsonObject>

namespace vesk {

/// What the controller has to know, as whoever watches it from outside knows it.
struct Knowledge {
    bool heard = false; ///< an answer or a failure has told something
    bool online = false;
    bool accepting = false;
    QJsonObject document; ///< the last good one
    int misses = 0;       ///< in a row
    bool changing = false;
    bool starting = false;
    std::optional<bool> backendReady;
    qint64 port = 0;
    QString host;
};

/// How many bays hold a job.
[[nodiscard]] int busyBays(const QJsonObject& document);

// The texts that follow from the knowledge, reckoned by the simulation itself.

[[nodiscard]] PanelTexts firstPanel();

/// After a good answer.
[[nodiscard]] PanelTexts connectedPanel(const Knowledge& knowledge);

/// After the first misses.
void showReconnecting(PanelTexts& panel);

/// Once the service was given up.
void showStopped(PanelTexts& panel, const Knowledge& knowledge);

/// The lines below the headline, which are written anew with whatever changes.
void writeLines(PanelTexts& panel, const Knowledge& knowledge);

[[nodiscard]] SettingsTexts settingsTexts(const Knowledge& knowledge, bool changingMode);

[[nodiscard]] QString readinessOf(const Knowledge& knowledge);

[[nodiscard]] QString limitsOf(const Knowledge& knowledge);

} // namespace vesk
