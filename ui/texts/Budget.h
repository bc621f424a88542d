#pragma once

#include "model/HealthDocument.h"

#include <QString>

namespace vesk {

/// The processing budget and counts that the dashboard and the rack panel both tell.
struct Budget {
    /// Counts that fit no 64-bit integer end the program.
    explicit Budget(const HealthDocument& document);

    /// Percentage for the dashboard's line: in force, else the document's, else 40.
    qint64 duty = 0;
    /// Percentage for the rack's line: in force, else configured, else the document's, else 40.
    qint64 rackDuty = 0;
    qint64 lanes = 0;
    qint64 configuredLanes = 0;
    QString reason;
    double cooldown = 0; ///< seconds left to cool down, fractions included
    qint64 completed = 0;
    qint64 failed = 0;

    /// "40% · 2/3 lanes · reason" with the given percentage.
    [[nodiscard]] QString lanesText(qint64 percentage) const;
};

} // namespace vesk
