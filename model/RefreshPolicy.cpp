#include "model/RefreshPolicy.h"

#include <algorithm>

namespace vesk {

Seconds RefreshPolicy::health(bool visible, bool active, bool setup) noexcept {
    if (setup || (visible && active)) {
        return Seconds(1.5);
    }
    if (visible) {
        return Seconds(5.0);
    }
    return active ? Seconds(10.0) : Seconds(30.0);
}

Seconds RefreshPolicy::diagnostics(bool visible, bool setup) noexcept {
    if (setup) {
        return Seconds(30.0);
    }
    return visible ? Seconds(60.0) : Seconds(300.0);
}

bool RefreshPolicy::diagnosticsDue(
    TimePoint now, std::optional<TimePoint> checked, bool visible, bool setup) noexcept {
    return !checked || Seconds(now - *checked) > diagnostics(visible, setup);
}

Seconds RefreshPolicy::tolerance(Seconds interval) noexcept {
    return std::min(Seconds(1.0), interval / 10);
}

} // namespace vesk
