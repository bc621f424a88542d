#pragma once

#include "model/SlotRecord.h"

#include <QJsonObject>
#include <QList>

#include <optional>

namespace vesk {

/// The service's account of itself, read through the lenient readers only. See docs/protocol.md.
using HealthDocument = QJsonObject;

/// A document that may be shown: the service said in it whether it accepts deep jobs.
struct ConfirmedHealth {
    HealthDocument document;
    bool deep = false;

    bool operator==(const ConfirmedHealth&) const = default;
};

/// `document` with its boolean `deep_scan_enabled`, or nothing where that is missing.
[[nodiscard]] std::optional<ConfirmedHealth> confirmed(const HealthDocument& document);

/// The bays, in the service's order.
[[nodiscard]] QList<SlotRecord> slotRecords(const HealthDocument& document);

/// How many bays hold a job.
[[nodiscard]] qsizetype activeCount(const QList<SlotRecord>& records);

/// Whether a diagnostics document says that photo analysis can work.
[[nodiscard]] bool reportsBackendReady(const QJsonObject& diagnostics);

} // namespace vesk
