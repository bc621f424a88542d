#pragma once

#include "model/HealthDocument.h"

#include <functional>
#include <optional>

namespace vesk {

/// What the setup sheet needs of the controller. Main thread only. Any `completion` may be empty.
class SetupController {
public:
    SetupController() = default;
    SetupController(const SetupController&) = delete;
    SetupController& operator=(const SetupController&) = delete;
    virtual ~SetupController() = default;

    /// The service is shown as connected.
    [[nodiscard]] virtual bool online() const = 0;

    /// Last confirmed acceptance of deep jobs.
    [[nodiscard]] virtual bool accepting() const = 0;

    /// The last good document, empty at first.
    [[nodiscard]] virtual const HealthDocument& lastHealth() const = 0;

    /// Whether the photo engine is usable; unknown until checked.
    [[nodiscard]] virtual std::optional<bool> backendReady() const = 0;

    [[nodiscard]] virtual qint64 port() const = 0;

    /// The service starts at the user's login.
    [[nodiscard]] virtual bool startsAtLogin() const = 0;

    /// Installs or removes the service's login file. Gives what to tell the user on failure.
    [[nodiscard]] virtual std::optional<QString> configureLogin(bool enabled) = 0;

    /// Asks the service to accept or refuse deep jobs; `completion` gets whether the service
    /// confirmed that value, and may be called before this returns.
    virtual void setDeep(bool enabled, std::function<void(bool)> completion) = 0;

    /// Starts the service; `completion` runs after a successful start only. Ignored while a start
    /// is under way.
    virtual void startService(std::function<void()> completion) = 0;

    /// Shows one failure to the user, without waiting.
    virtual void showError(const QString& message) = 0;

    /// Records that setup was gone through to its end.
    virtual void setupCompleted() = 0;

    /// The sheet has closed: the controller lets go of it.
    virtual void setupClosed() = 0;
};

} // namespace vesk
