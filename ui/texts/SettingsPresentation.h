#pragma once

#include "service/HealthDocument.h"

#include <QString>

#include <array>
#include <optional>

namespace vesk {

/// The service's words for its performance modes, in the order in which they are offered.
extern const std::array<QString, 3> performanceModes;

/// What the settings sheet tells.
struct SettingsPresentation {
    std::optional<int> mode; ///< index of the mode to select; empty where the choice is to stay
    bool enabled = false;    ///< a mode may be chosen
    QString thermal;
    QString performance;

    /// `changing`: a choice is on its way to the service.
    SettingsPresentation(const HealthDocument& lastHealth, bool online, bool changing);

    bool operator==(const SettingsPresentation&) const = default;
};

} // namespace vesk
