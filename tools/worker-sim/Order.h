#pragma once

#include "tools/worker-sim/Fault.h"
#include "tools/worker-sim/Seconds.h"

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace vesk::sim {

struct ClearFaults {};

/// Connections are refused for a time.
struct Closure {
    Seconds time{};
    bool restart = false; ///< what listens then has just been started
};

/// What the one who tests or demonstrates has the worker do.
using Order = std::variant<Fault, ClearFaults, Closure>;

struct ScenarioStep {
    Seconds at{}; ///< after the start
    Order order;
};

/// In the order of their times.
using Scenario = std::vector<ScenarioStep>;

/// The closure that `document` describes, or a sentence that says what is wrong with it.
[[nodiscard]] std::variant<Closure, std::string> closureFromJson(const nlohmann::json& document);

/// The scenario that a file's text describes, or a sentence that says what is wrong with it.
[[nodiscard]] std::variant<Scenario, std::string> scenarioFromText(std::string_view text);

} // namespace vesk::sim
