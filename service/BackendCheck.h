#pragma once

#include "model/RefreshPolicy.h"

#include <QObject>

#include <optional>

namespace vesk {

class ServiceClient;

/// Knows whether the photo engine behind the service is usable, asked for rarely since it costs
/// the service more than a health answer. Main thread only.
class BackendCheck final : public QObject {
    Q_OBJECT

public:
    BackendCheck(ServiceClient& client, Clock clock);

    /// Unknown until the first answer after a connection; a failed check reads false.
    [[nodiscard]] std::optional<bool> backendReady() const noexcept { return backendReady_; }

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
    std::optional<TimePoint> backendChecked_; ///< when the last check was started
    std::optional<QObject> connection_;       ///< receives the answers until the next reset
};

} // namespace vesk
