#pragma once

#include "tools/worker-sim/Scenario.h"

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <thread>

namespace vesk::sim {

class Service;
class Simulation;

/// Does what a scenario says when its time has come, on a thread of its own.
class ScenarioPlayer {
public:
    /// Arms the faults that a scenario begins with at 0. Both outlive this.
    ScenarioPlayer(Scenario scenario, Simulation& simulation, Service& service);
    ScenarioPlayer(const ScenarioPlayer&) = delete;
    ScenarioPlayer& operator=(const ScenarioPlayer&) = delete;
    ScenarioPlayer(ScenarioPlayer&&) = delete;
    ScenarioPlayer& operator=(ScenarioPlayer&&) = delete;

    /// Leaves out what has not been done.
    ~ScenarioPlayer();

    /// Once: the times count from here.
    void begin();

private:
    void play();
    void perform(const Fault& fault);
    void perform(const ClearFaults& clear);
    void perform(const Closure& closure);

    const Scenario scenario_;
    std::size_t next_ = 0;
    Simulation& simulation_;
    Service& service_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool quitting_ = false;
    std::thread thread_;
};

} // namespace vesk::sim
