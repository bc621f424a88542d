#include "tools/worker-sim/Closure.h"

#include <nlohmann/json.hpp>

namespace vesk::sim {

namespace {

using nlohmann::json;

constexpr double longestClosure = 86'400;

} // namespace

std::variant<Closure, std::string> closureFromJson(const json& document) {
    const json seconds = document.is_object() ? document.value("closed_seconds", json()) : json();
    if (!seconds.is_number() || seconds <= 0 || seconds > longestClosure) {
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

} // namespace vesk::sim
