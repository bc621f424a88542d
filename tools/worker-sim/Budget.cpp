#include "tools/worker-sim/Budget.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <utility>

namespace vesk::sim {

namespace {

constexpr std::array<std::pair<Mode, std::string_view>, 3> modeNames{
    {{Mode::Automatic, "automatic"}, {Mode::Quiet, "quiet"}, {Mode::Faster, "faster"}}};

constexpr int activeDuty = 15;
constexpr int automaticDuty = 40;
constexpr int quietDuty = 20;
constexpr int fasterDuty = 55;
constexpr int automaticCeiling = 65;
constexpr int fasterCeiling = 85;
constexpr double recoveryPerSecond = 2;

} // namespace

std::string_view nameOf(Mode mode) {
    return std::ranges::find(modeNames, mode, &std::pair<Mode, std::string_view>::first)->second;
}

std::optional<Mode> modeFromName(std::string_view name) {
    const auto* const found =
        std::ranges::find(modeNames, name, &std::pair<Mode, std::string_view>::second);
    return found == modeNames.end() ? std::nullopt : std::optional(found->first);
}

Budget::Budget(int lanes) : configuredLanes_(lanes) {}

void Budget::setMode(Mode mode) {
    mode_ = mode;
    settle();
}

void Budget::advance(Seconds step, Random& random) {
    untilActivity_ -= step;
    if (untilActivity_ <= Seconds(0)) {
        constexpr std::array activities{Activity::InUse, Activity::Light, Activity::Idle};
        activity_ = activities.at(static_cast<std::size_t>(random.whole(0, 2)));
        untilActivity_ = random.seconds(20, 45);
    }
    untilThermal_ -= step;
    if (untilThermal_ <= Seconds(0)) {
        warm_ = !warm_;
        untilThermal_ = warm_ ? random.seconds(10, 18) : random.seconds(60, 120);
    }
    duty_ += recoveryPerSecond * step.count();
    settle();
}

int Budget::dutyPercent() const {
    return static_cast<int>(duty_);
}

int Budget::lanes() const {
    return target().lanes;
}

Budget::Target Budget::target() const {
    const int one = std::min(1, configuredLanes_);
    const int two = std::min(2, configuredLanes_);
    if (warm_) {
        return {activeDuty, one, "Cooling down"};
    }
    if (mode_ == Mode::Quiet) {
        return {quietDuty, one, "Cool and quiet"};
    }
    switch (activity_) {
    case Activity::InUse:
        return {activeDuty, one, "Computer in use"};
    case Activity::Light:
        return {configuredDuty(), two, "Sharing with light use"};
    case Activity::Idle:
        break;
    }
    return {
        mode_ == Mode::Faster ? fasterCeiling : automaticCeiling, configuredLanes_,
        "Cool and idle"};
}

int Budget::configuredDuty() const {
    switch (mode_) {
    case Mode::Automatic:
        return automaticDuty;
    case Mode::Quiet:
        return quietDuty;
    case Mode::Faster:
        return fasterDuty;
    }
    return automaticDuty;
}

void Budget::settle() {
    duty_ = std::min(duty_, static_cast<double>(target().dutyPercent));
}

nlohmann::json Budget::record(int running) const {
    return {
        {"performance_mode", nameOf(mode_)},
        {"thermal_state", warm_ ? "fair" : "nominal"},
        {"configured_duty_percent", configuredDuty()},
        {"active_duty_percent", activeDuty},
        {"idle_ceiling_percent", mode_ == Mode::Faster ? fasterCeiling : automaticCeiling},
        {"duty_percent", dutyPercent()},
        {"effective_duty_percent", dutyPercent()},
        {"configured_workers", configuredLanes_},
        {"workers", running},
        {"effective_workers", lanes()},
        {"reason", target().reason}};
}

} // namespace vesk::sim
