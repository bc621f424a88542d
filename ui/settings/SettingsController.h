#pragma once

#include "model/HealthDocument.h"

#include <functional>

namespace vesk {

/// What the settings sheet needs of the controller. Main thread only. Any `completion` may be
/// empty.
class SettingsController {
public:
    SettingsController() = default;
    SettingsController(const SettingsController&) = delete;
    SettingsController& operator=(const SettingsController&) = delete;
    virtual ~SettingsController() = default;

    /// The service is shown as connected.
    [[nodiscard]] virtual bool online() const = 0;

    /// The last good document, empty at first.
    [[nodiscard]] virtual const HealthDocument& lastHealth() const = 0;

    /// Asks the service for `mode` ("automatic", "quiet", "faster"); `completion` gets whether the
    /// service confirmed, and may be called before this returns.
    virtual void setPerformanceMode(const QString& mode, std::function<void(bool)> completion) = 0;

    /// Shows one failure to the user, without waiting.
    virtual void showError(const QString& message) = 0;
};

} // namespace vesk
