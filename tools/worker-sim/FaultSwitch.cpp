#include "tools/worker-sim/FaultSwitch.h"

#include <algorithm>

namespace vesk::sim {

std::optional<Fault> FaultSwitch::take(std::string_view path) {
    const auto found = std::ranges::find_if(armed_, [&](const Fault& fault) {
        return fault.path.empty() || path.ends_with("/" + fault.path);
    });
    if (found == armed_.end()) {
        return std::nullopt;
    }
    Fault fault = *found;
    if (found->count && --*found->count == 0) {
        armed_.erase(found);
    }
    return fault;
}

} // namespace vesk::sim
