#pragma once

#include "model/RefreshPolicy.h"

#include <QObject>

#include <memory>
#include <optional>

namespace vesk {

class ServiceClient;

/// Knows whether the photo engine behind the service is usable, asked for rarely since it costs
/// the service more than a health answer. Main thread only.
class BackendCheck final : public QObject {
    Q_OBJECT

public:
    BackendCheck(ServiceClient& client, Clock clock, QObject* parent = nullptr);

    /// Unknown until the first answer after a connection; a failed check reads false.
    [[nodiscard]] std::optional<bool> backendReady() const noexcept { return backendReady_; }

    /// When the last check was started.
    [[nodiscard]] std::optional<TimePoint> backendChecked() const noexcept {
        return backendChecked_;
    }

    /// Starts a check where one is due.
    void checkIfDue(Attention attention);

    /// Forgets all, a check under way included: the next connection asks afresh.
    void reset();

signals:
    /// An answer has come, or failed to.
    void answered();

private:
    void checkBackend();

    ServiceClient& client_;
    Clock clock_;
    std::optional<bool> backendReady_;
    std::optional<TimePoint> backendChecked_;
    std::unique_ptr<QObject> inFlight_; // receiver of the checks since the last reset
};

} // namespace vesk
