#include "tools/worker-sim/Order.h"

#include <nlohmann/json.hpp>

#include <utility>

namespace vesk::sim {

namespace {

using nlohmann::json;

constexpr double oneDay = 86'400;

template<typename Kind>
std::variant<ScenarioStep, std::string>
stepWith(Seconds at, std::variant<Kind, std::string> order) {
    if (auto* complaint = std::get_if<std::string>(&order)) {
        return std::move(*complaint);
    }
    return ScenarioStep{.at = at, .order = std::get<Kind>(std::move(order))};
}

std::variant<ScenarioStep, std::string> stepFromJson(const json& document) {
    if (!document.is_object()) {
        return "a step is a JSON object";
    }
    const json time = document.value("at", json());
    if (!time.is_number() || time < 0 || time > oneDay) {
        return "at must be a number of seconds from 0 to 86400";
    }
    const Seconds at(time.get<double>());
    if (document.size() == 2 && document.contains("fault")) {
        return stepWith(at, faultFromJson(document["fault"]));
    }
    if (document.size() == 2 && document.contains("listener")) {
        return stepWith(at, closureFromJson(document["listener"]));
    }
    if (document.size() == 2 && document.contains("clear_faults")) {
        if (document["clear_faults"] != true) {
            return "clear_faults must be true";
        }
        return ScenarioStep{.at = at, .order = ClearFaults{}};
    }
    return "besides at there must be one of fault, listener and clear_faults, and nothing else";
}

} // namespace

std::variant<Closure, std::string> closureFromJson(const json& document) {
    const json seconds = document.is_object() ? document.value("closed_seconds", json()) : json();
    if (!seconds.is_number() || seconds <= 0 || seconds > oneDay) {
        return "closed_seconds must be a number above 0, at most 86400";
    }
    const json restart = document.value("restart", json(false));
    if (!restart.is_boolean()) {
        return "restart must be true or false";
    }
    if (document.size() > 1 + document.count("restart")) {
        return "there is a key that no closure has";
    }
    return Closure{.time = Seconds(seconds.get<double>()), .restart = restart.get<bool>()};
}

std::variant<Scenario, std::string> scenarioFromText(std::string_view text) {
    const json document = json::parse(text, nullptr, false);
    if (!document.is_array()) {
        return "a scenario is a JSON list of steps";
    }
    Scenario scenario;
    for (const json& element : document) {
        const std::string place = "step " + std::to_string(scenario.size() + 1) + ": ";
        auto step = stepFromJson(element);
        if (const auto* complaint = std::get_if<std::string>(&step)) {
            return place + *complaint;
        }
        if (!scenario.empty() && std::get<ScenarioStep>(step).at < scenario.back().at) {
            return place + "at must not be before that of the step before";
        }
        scenario.push_back(std::get<ScenarioStep>(std::move(step)));
    }
    return scenario;
}

} // namespace vesk::sim
