#pragma once

#include "tools/worker-sim/Closure.h"
#include "tools/worker-sim/Fault.h"

#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace vesk::sim {

struct ClearFaults {};

struct ScenarioStep {
    Seconds at{}; ///< after the start
    std::variant<Fault, ClearFaults, Closure> action;
};

/// In the order of their times.
using Scenario = std::vector<ScenarioStep>;

/// The scenario that a file's text describes, or a sentence that says what is wrong with it.
[[nodiscard]] std::variant<Scenario, std::string> scenarioFromText(std::string_view text);

} // namespace vesk::sim
