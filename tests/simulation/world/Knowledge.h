#pragma once

#include "ui/texts/ServiceFacts.h"

#include <QJsonObject>

namespace vesk {

/// What the controller has to know, as an observer outside knows it.
struct Knowledge {
    bool online = false;
    bool accepting = false;
    QJsonObject document;      ///< the last good one
    HealthDocument lastHealth; ///< the same as the product reads it
    int misses = 0;            ///< in a row
    bool changing = false;
    bool starting = false;
    std::optional<bool> backendReady;
    qint64 port = 0;
    QString host;
};

/// How many bays hold a job.
[[nodiscard]] int busyBays(const QJsonObject& document);

/// The facts from which the product computes its texts.
[[nodiscard]] ServiceFacts factsOf(const Knowledge& knowledge);

} // namespace vesk
