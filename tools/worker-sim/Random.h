#pragma once

#include "tools/worker-sim/Seconds.h"

#include <cstdint>
#include <random>

namespace vesk::sim {

/// A seeded source of chance. The same seed gives the same run on every system, which the
/// standard distributions do not promise.
class Random {
public:
    explicit Random(std::uint64_t seed) : engine_(seed) {}

    /// At least `low`, below `high`.
    [[nodiscard]] double between(double low, double high) {
        return low + (high - low) * (static_cast<double>(engine_() >> 11U) * 0x1.0p-53);
    }

    [[nodiscard]] Seconds seconds(double low, double high) { return Seconds(between(low, high)); }

    /// At least `low`, at most `high`.
    [[nodiscard]] int whole(int low, int high) {
        return static_cast<int>(between(low, static_cast<double>(high) + 1));
    }

private:
    std::mt19937_64 engine_;
};

} // namespace vesk::sim
