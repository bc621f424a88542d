#pragma once

#include "tools/worker-sim/Bay.h"
#include "tools/worker-sim/Budget.h"
#include "tools/worker-sim/Random.h"

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <vector>

namespace vesk::sim {

struct RackSize {
    int bays = 3;
    int devices = 2;
};

/// The simulated service without its network: bays, phones and budget over simulated time. The
/// same seed and the same calls give the same documents.
class Rack {
public:
    Rack(RackSize size, std::uint64_t seed);

    /// Lets simulated time pass, at most ten minutes at once: what goes beyond is left out.
    void advance(Seconds elapsed);

    /// Off: nothing deep is accepted, what no engine has begun on goes back, the rest finishes.
    void setDeepEnabled(bool enabled);

    void setMode(Mode mode) { mode_ = mode; }

    [[nodiscard]] nlohmann::json health() const;
    [[nodiscard]] static nlohmann::json diagnostics();

private:
    struct Place {
        Bay bay;
        Seconds untilJob;
    };

    void tick();
    [[nodiscard]] Seconds drawPause();
    [[nodiscard]] Budget budget() const;
    [[nodiscard]] int lanesInUse() const;

    Random random_;
    int devices_;
    std::vector<Place> places_;
    Mode mode_ = Mode::Automatic;
    bool deepEnabled_ = true;
    int jobs_ = 0;
    Seconds time_{};
    Seconds unspent_{};
};

} // namespace vesk::sim
