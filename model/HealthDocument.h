#pragma once

#include "model/ActivityPolicy.h"
#include "model/Bays.h"
#include "model/ConnectedDevice.h"
#include "model/EngineBackend.h"
#include "model/ReadyServices.h"

#include <QList>
#include <QString>

#include <optional>

namespace vesk {

/// The service's account of itself; empty before the first answer. A member is empty where the
/// service left it out or sent another type. See docs/protocol.md.
struct HealthDocument {
    Bays bays; ///< the service's `slots`, a word that the toolkit has taken
    QList<ConnectedDevice> connectedDevices;
    std::optional<double> cooldownSeconds;    ///< left of the rest between jobs
    std::optional<double> cooldownCapSeconds; ///< length of a whole rest
    ReadyServices services;
    std::optional<QString> model; ///< of photo descriptions
    EngineBackend videoBackend;
    EngineBackend audioBackend;
    ActivityPolicy activityPolicy;
    std::optional<qint64> dutyPercent;       ///< in force
    std::optional<qint64> workers;           ///< lanes that may work now
    std::optional<qint64> configuredWorkers; ///< lanes configured
    std::optional<QString> deviceId;         ///< name of the machine
    std::optional<QString> device;           ///< its system

    bool operator==(const HealthDocument&) const = default;
};

/// A document that may be shown: the service said with it whether it accepts deep jobs.
struct ConfirmedHealth {
    HealthDocument document;
    bool deep = false; ///< the service's `deep_scan_enabled`

    bool operator==(const ConfirmedHealth&) const = default;
};

} // namespace vesk
