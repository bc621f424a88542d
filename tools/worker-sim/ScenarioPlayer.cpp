#include "tools/worker-sim/ScenarioPlayer.h"

#include "tools/worker-sim/Service.h"
#include "tools/worker-sim/Simulation.h"

#include <chrono>
#include <utility>

namespace vesk::sim {

ScenarioPlayer::ScenarioPlayer(Scenario scenario, Simulation& simulation, Service& service)
    : scenario_(std::move(scenario)), simulation_(simulation), service_(service) {
    for (; next_ < scenario_.size() && scenario_[next_].at == Seconds::zero(); ++next_) {
        const auto* fault = std::get_if<Fault>(&scenario_[next_].action);
        if (fault == nullptr) {
            break;
        }
        perform(*fault);
    }
}

ScenarioPlayer::~ScenarioPlayer() {
    {
        const std::lock_guard lock(mutex_);
        quitting_ = true;
    }
    changed_.notify_all();
    if (thread_.joinable()) {
        thread_.join();
    }
}

void ScenarioPlayer::begin() {
    thread_ = std::thread([this] { play(); });
}

void ScenarioPlayer::play() {
    using Clock = std::chrono::steady_clock;
    const auto begun = Clock::now();
    for (; next_ < scenario_.size(); ++next_) {
        const ScenarioStep& step = scenario_[next_];
        const auto due = begun + std::chrono::ceil<Clock::duration>(step.at);
        {
            std::unique_lock lock(mutex_);
            if (changed_.wait_until(lock, due, [this] { return quitting_; })) {
                return;
            }
        }
        std::visit([this](const auto& action) { perform(action); }, step.action);
    }
}

void ScenarioPlayer::perform(const Fault& fault) {
    simulation_.arm(fault);
}

void ScenarioPlayer::perform(const ClearFaults& /*clear*/) {
    simulation_.clearFaults();
}

void ScenarioPlayer::perform(const Closure& closure) {
    service_.closeListener(closure);
}

} // namespace vesk::sim
