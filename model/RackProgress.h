#pragma once

#include "model/SlotRecord.h"

#include <QString>

namespace vesk {

/// How far one bay is: a fill fraction and its caption.
struct RackProgress {
    double value = 0;  ///< 0 is empty, 1 is full; an estimate may fall below 0
    QString label;     ///< caption of the meter
    bool exact = true; ///< measured or definite, as opposed to an estimate or a fixed position

    /// `cooldown`: remaining cool-down in seconds; `cooldownCap`: the length of a whole one. A
    /// cool-down that fits no 64-bit integer ends the program.
    RackProgress(const SlotRecord& slot, double cooldown, double cooldownCap);

    bool operator==(const RackProgress&) const = default;
};

} // namespace vesk
