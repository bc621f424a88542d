#pragma once

#include "service/ServiceClient.h"

#include <QObject>

namespace vesk {

/// Asks the service to accept or refuse deep jobs, one change at a time. Main thread only.
class DeepJobSwitch final : public QObject {
    Q_OBJECT

public:
    explicit DeepJobSwitch(ServiceClient& client);

    /// A change has been sent and its answer has not been handled yet.
    [[nodiscard]] bool changingPolicy() const noexcept { return changingPolicy_; }

    /// Sends the change and gives its answer to `handler`, `changingPolicy` being false again by
    /// then. Not to be called while a change is under way.
    void send(bool enabled, ServiceClient::HealthHandler handler);

private:
    ServiceClient& client_;
    bool changingPolicy_ = false;
};

} // namespace vesk
