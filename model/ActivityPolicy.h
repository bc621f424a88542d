#pragma once

#include <QString>

#include <optional>

namespace vesk {

/// The service's processing budget. Duties are percentages, workers are lanes. A member is empty
/// where the service left it out or sent another type.
struct ActivityPolicy {
    std::optional<QString> performanceMode;      ///< "automatic", "quiet" or "faster"
    std::optional<QString> thermalState;         ///< the machine's temperature in a word
    std::optional<QString> reason;               ///< why the budget is what it is
    std::optional<qint64> effectiveDutyPercent;  ///< after limits by temperature and use
    std::optional<qint64> configuredDutyPercent; ///< that the mode asks for
    std::optional<qint64> dutyPercent;           ///< in force
    std::optional<qint64> activeDutyPercent;     ///< while the machine is used or warm
    std::optional<qint64> idleCeilingPercent;    ///< the most while it is cool and idle
    std::optional<qint64> effectiveWorkers;      ///< usable after limits
    std::optional<qint64> configuredWorkers;

    bool operator==(const ActivityPolicy&) const = default;
};

} // namespace vesk
