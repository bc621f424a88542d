#include "service/DeepJobSwitch.h"

#include <utility>

namespace vesk {

DeepJobSwitch::DeepJobSwitch(ServiceClient& client) : client_(client) {}

void DeepJobSwitch::send(bool enabled, ServiceClient::HealthHandler handler) {
    Q_ASSERT(!changingPolicy_);
    changingPolicy_ = true;
    client_.postDeepScan(
        enabled, this,
        [this, handler = std::move(handler)](const std::optional<ConfirmedHealth>& answer) {
            changingPolicy_ = false;
            handler(answer);
        });
}

} // namespace vesk
