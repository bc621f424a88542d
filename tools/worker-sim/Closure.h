#pragma once

#include "tools/worker-sim/Random.h"

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <variant>

namespace vesk::sim {

/// Connections are refused for a time.
struct Closure {
    Seconds time{};
    bool restart = false; ///< what listens then has just been started
};

/// The closure that `document` describes, or a sentence that says what is wrong with it.
[[nodiscard]] std::variant<Closure, std::string> closureFromJson(const nlohmann::json& document);

} // namespace vesk::sim
