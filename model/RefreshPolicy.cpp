#include "model/RefreshPolicy.h"

#include <algorithm>

namespace vesk {

Seconds RefreshPolicy::health(Attention attention, bool active) noexcept {
    if (attention.setup || (attention.visible && active)) {
        return Seconds(1.5);
    }
    if (attention.visible) {
        return Seconds(5.0);
    }
    return active ? Seconds(10.0) : Seconds(30.0);
}

Seconds RefreshPolicy::diagnostics(Attention attention) noexcept {
    if (attention.setup) {
        return Seconds(30.0);
    }
    return attention.visible ? Seconds(60.0) : Seconds(300.0);
}

bool RefreshPolicy::diagnosticsDue(
    Attention attention, TimePoint now, std::optional<TimePoint> checked) noexcept {
    return !checked || Seconds(now - *checked) > diagnostics(attention);
}

Seconds RefreshPolicy::tolerance(Seconds interval) noexcept {
    return std::min(Seconds(1.0), interval / 10);
}

} // namespace vesk
