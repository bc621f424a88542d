#pragma once

#include "tools/worker-sim/Random.h"

#include <nlohmann/json_fwd.hpp>

#include <optional>
#include <string>
#include <string_view>

namespace vesk::sim {

enum class Mode { Automatic, Quiet, Faster };

[[nodiscard]] std::string_view nameOf(Mode mode);

/// The mode of that name, in small letters; nothing for any other text.
[[nodiscard]] std::optional<Mode> modeFromName(std::string_view name);

/// How much processing is allowed now. It follows the chosen mode, a simulated person at the
/// machine and a simulated temperature: down at once, up little by little.
class Budget {
public:
    /// `lanes`: how many are configured, 0 or more.
    explicit Budget(int lanes);

    void setMode(Mode mode);
    [[nodiscard]] Mode mode() const { return mode_; }

    void advance(Seconds step, Random& random);

    /// At least 1, at most 100.
    [[nodiscard]] int dutyPercent() const;

    /// Lanes that may work now.
    [[nodiscard]] int lanes() const;

    /// `activity_policy`, with `running` lanes at work.
    [[nodiscard]] nlohmann::json record(int running) const;

private:
    enum class Activity { InUse, Light, Idle };

    struct Target {
        int dutyPercent;
        int lanes;
        const char* reason;
    };

    [[nodiscard]] Target target() const;
    [[nodiscard]] int configuredDuty() const;
    void settle();

    int configuredLanes_;
    Mode mode_ = Mode::Automatic;
    Activity activity_ = Activity::Idle;
    bool warm_ = false;
    Seconds untilActivity_{45};
    Seconds untilThermal_{70};
    double duty_ = 40;
};

} // namespace vesk::sim
