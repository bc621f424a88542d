#pragma once

#include "tools/worker-sim/Seconds.h"

#include <nlohmann/json_fwd.hpp>

#include <optional>
#include <string_view>

namespace vesk::sim {

enum class Mode { Automatic, Quiet, Faster };

/// The mode of that name, in small letters; nothing for any other text.
[[nodiscard]] std::optional<Mode> modeFromName(std::string_view name);

/// How much processing is allowed at a time. It follows the mode and a timetable on which the
/// computer rests, is used, and gets warm.
struct Budget {
    int configuredLanes;
    Mode mode = Mode::Automatic;
    Seconds time{};

    [[nodiscard]] int lanes() const;
    [[nodiscard]] int dutyPercent() const;

    /// `activity_policy`, with `running` lanes at work.
    [[nodiscard]] nlohmann::json record(int running) const;
};

} // namespace vesk::sim
