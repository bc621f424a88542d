#include "tools/worker-sim/Budget.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace vesk::sim {

namespace {

constexpr int allLanes = 64;

struct Duties {
    const char* mode;
    int active; ///< while the computer is used or warm
    int configured;
    int idleCeiling;
    int lanes;
};

/// In the order of the modes.
constexpr std::array duties{
    Duties{"automatic", 15, 40, 65, allLanes}, Duties{"quiet", 15, 20, 20, 1},
    Duties{"faster", 15, 55, 85, allLanes}};

struct Period {
    double end; ///< seconds after the begin of the timetable
    const char* reason;
    const char* thermalState;
    int Duties::*duty;
    int lanes;
};

constexpr std::array timetable{
    Period{45, "Cool and idle", "nominal", &Duties::idleCeiling, allLanes},
    Period{70, "Sharing with light use", "nominal", &Duties::configured, 2},
    Period{95, "Computer in use", "nominal", &Duties::active, 1},
    Period{125, "Cool and idle", "nominal", &Duties::idleCeiling, allLanes},
    Period{140, "Cooling down", "fair", &Duties::active, 1}};

const Duties& dutiesOf(Mode mode) {
    return duties.at(static_cast<std::size_t>(mode));
}

const Period& periodAt(Seconds time) {
    const double now = std::fmod(time.count(), timetable.back().end);
    return *std::ranges::upper_bound(timetable, now, {}, &Period::end);
}

} // namespace

std::optional<Mode> modeFromName(std::string_view name) {
    const auto* const found = std::ranges::find(duties, name, &Duties::mode);
    return found == duties.end() ? std::nullopt
                                 : std::optional(static_cast<Mode>(found - duties.begin()));
}

int Budget::lanes() const {
    return std::min({configuredLanes, dutiesOf(mode).lanes, periodAt(time).lanes});
}

int Budget::dutyPercent() const {
    return dutiesOf(mode).*periodAt(time).duty;
}

nlohmann::json Budget::record(int running) const {
    const Duties& duty = dutiesOf(mode);
    const Period& period = periodAt(time);
    return {
        {"performance_mode", duty.mode},
        {"thermal_state", period.thermalState},
        {"reason", period.reason},
        {"configured_duty_percent", duty.configured},
        {"active_duty_percent", duty.active},
        {"idle_ceiling_percent", duty.idleCeiling},
        {"duty_percent", dutyPercent()},
        {"effective_duty_percent", dutyPercent()},
        {"configured_workers", configuredLanes},
        {"effective_workers", lanes()},
        {"workers", running}};
}

} // namespace vesk::sim
