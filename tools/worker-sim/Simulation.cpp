#include "tools/worker-sim/Simulation.h"

#include <nlohmann/json.hpp>

#include <utility>

namespace vesk::sim {

Simulation::Simulation(std::uint64_t seed, RackSize size, double speed)
    : fresh_(size, seed), rack_(fresh_), speed_(speed) {}

std::optional<Fault> Simulation::receive(LoggedRequest request, std::string_view path) {
    const std::lock_guard lock(mutex_);
    log_.add(std::move(request));
    return faults_.take(path);
}

std::optional<Seconds> Simulation::leaveUnread(std::string_view path) {
    const std::lock_guard lock(mutex_);
    const auto fault = faults_.takeUnread(path);
    return fault ? fault->unread : std::nullopt;
}

void Simulation::restart() {
    const std::lock_guard lock(mutex_);
    rack_ = fresh_;
    caughtUp_ = std::chrono::steady_clock::now();
}

nlohmann::json Simulation::health() {
    const std::lock_guard lock(mutex_);
    catchUp();
    return rack_.health();
}

void Simulation::setDeepEnabled(bool enabled) {
    const std::lock_guard lock(mutex_);
    catchUp();
    rack_.setDeepEnabled(enabled);
}

void Simulation::setMode(Mode mode) {
    const std::lock_guard lock(mutex_);
    catchUp();
    rack_.setMode(mode);
}

void Simulation::arm(Fault fault) {
    const std::lock_guard lock(mutex_);
    faults_.arm(std::move(fault));
}

void Simulation::clearFaults() {
    const std::lock_guard lock(mutex_);
    faults_.clear();
}

nlohmann::json Simulation::faults() {
    const std::lock_guard lock(mutex_);
    auto list = nlohmann::json::array();
    for (const Fault& fault : faults_.armed()) {
        list.push_back(toJson(fault));
    }
    return list;
}

void Simulation::clearRequests() {
    const std::lock_guard lock(mutex_);
    log_.clear();
}

nlohmann::json Simulation::requests() {
    const std::lock_guard lock(mutex_);
    return log_.records();
}

void Simulation::catchUp() {
    const auto now = std::chrono::steady_clock::now();
    rack_.advance(Seconds(now - caughtUp_) * speed_);
    caughtUp_ = now;
}

} // namespace vesk::sim
