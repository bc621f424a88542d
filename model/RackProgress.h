#pragma once

#include "model/Cooldown.h"
#include "model/SlotRecord.h"

#include <QString>

namespace vesk {

/// How far one bay is: a fill fraction and its caption.
struct RackProgress {
    double value = 0;  ///< 0 is empty, 1 is full; an estimate may fall below 0
    QString label;     ///< caption of the meter
    bool exact = true; ///< measured or definite, as opposed to an estimate or a fixed position

    /// A cool-down that fits no 64-bit integer ends the program.
    RackProgress(const SlotRecord& slot, Cooldown cooldown);

    bool operator==(const RackProgress&) const = default;
};

} // namespace vesk
