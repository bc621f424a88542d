#pragma once

#include "model/HealthDocument.h"

#include <QString>

#include <optional>

namespace vesk {

/// The facts that the texts of the dashboard are computed from, as their owners hold them at this
/// moment.
struct ServiceFacts {
    HealthDocument lastHealth;        ///< last good document, empty at first
    bool online = false;              ///< the service is shown as connected
    bool accepting = false;           ///< last confirmed acceptance of deep jobs
    bool changingPolicy = false;      ///< a deep-job change is under way
    bool starting = false;            ///< a start of the service is under way
    std::optional<bool> backendReady; ///< photo engine usable; unknown until checked
    qint64 port = 0;
    QString hostName; ///< name of this machine, empty where it has none

    bool operator==(const ServiceFacts&) const = default;
};

} // namespace vesk
