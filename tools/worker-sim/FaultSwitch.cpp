#include "tools/worker-sim/FaultSwitch.h"

#include <algorithm>

namespace vesk::sim {

namespace {

bool fits(const Fault& fault, std::string_view path) {
    return fault.path.empty() || path.ends_with("/" + fault.path);
}

} // namespace

std::optional<Fault> FaultSwitch::take(std::string_view path) {
    for (auto entry = armed_.begin(); entry != armed_.end(); ++entry) {
        if (!fits(*entry, path)) {
            continue;
        }
        if (entry->skip) {
            if (--*entry->skip == 0) {
                entry->skip.reset();
            }
            continue;
        }
        Fault fault = *entry;
        if (entry->count && --*entry->count == 0) {
            armed_.erase(entry);
        }
        return fault;
    }
    return std::nullopt;
}

std::optional<Fault> FaultSwitch::takeUnread(std::string_view path) {
    const auto met = std::ranges::find_if(
        armed_, [&](const Fault& fault) { return fits(fault, path) && !fault.skip; });
    return met != armed_.end() && met->unread ? take(path) : std::nullopt;
}

} // namespace vesk::sim
