#pragma once

#include "model/ServiceState.h"
#include "model/SlotRecord.h"

#include <QString>

namespace vesk {

/// The four texts that tell what one bay does.
struct SlotPresentation {
    QString title;  ///< kind of work, or the idle state
    QString detail; ///< one line of explanation
    QString state;  ///< one-word badge
    QString model;  ///< engine in use, an em dash when none applies

    /// Never fails.
    SlotPresentation(const SlotRecord& slot, ServiceState service);

    bool operator==(const SlotPresentation&) const = default;
};

} // namespace vesk
