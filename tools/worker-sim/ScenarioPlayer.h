#pragma once

#include "tools/worker-sim/Scenario.h"

#include <condition_variable>
#include <mutex>
#include <thread>

namespace vesk::sim {

class Service;
class Simulation;

/// Does what a scenario says when its time has come, on a thread of its own, counted from when
/// this was made.
class ScenarioPlayer {
public:
    /// Both outlive this.
    ScenarioPlayer(Scenario scenario, Simulation& simulation, Service& service);
    ScenarioPlayer(const ScenarioPlayer&) = delete;
    ScenarioPlayer& operator=(const ScenarioPlayer&) = delete;
    ScenarioPlayer(ScenarioPlayer&&) = delete;
    ScenarioPlayer& operator=(ScenarioPlayer&&) = delete;

    /// Leaves out what has not been done.
    ~ScenarioPlayer();

private:
    void play();
    void perform(const Fault& fault);
    void perform(const ClearFaults& clear);
    void perform(const Closure& closure);

    const Scenario scenario_;
    Simulation& simulation_;
    Service& service_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool quitting_ = false;
    std::thread thread_;
};

} // namespace vesk::sim
