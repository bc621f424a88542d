#pragma once

#include "model/HealthDocument.h"

#include <QString>

#include <array>
#include <optional>

namespace vesk {

/// The service's words for its performance modes, in the order in which they are offered.
extern const std::array<QString, 3> performanceModes;

/// What the texts of the settings sheet depend on besides the document.
struct SettingsState {
    bool online = false;   ///< the service answers
    bool changing = false; ///< a choice is on its way to it
};

/// What the settings sheet tells.
struct SettingsPresentation {
    std::optional<int> mode; ///< index of the mode to select; empty where the choice is to stay
    bool enabled = false;    ///< a mode may be chosen
    QString thermal;
    QString performance;

    SettingsPresentation(const HealthDocument& lastHealth, SettingsState state);

    bool operator==(const SettingsPresentation&) const = default;
};

} // namespace vesk
