#pragma once

#include "tools/worker-sim/Random.h"

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace vesk::sim {

/// `connected_devices` of so many phones. They come and go on a timetable, but the first one stays;
/// one that left is listed until it was silent for a while.
[[nodiscard]] nlohmann::json phoneRecords(int count, Seconds time);

/// The id of some phone that is here then; `count` is above 0.
[[nodiscard]] std::string drawSender(int count, Seconds time, Random& random);

} // namespace vesk::sim
