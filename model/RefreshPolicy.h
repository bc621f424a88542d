#pragma once

#include "model/Timing.h"

#include <optional>

namespace vesk {

/// How often the service is asked, and when it counts as gone.
struct RefreshPolicy {
    RefreshPolicy() = delete;

    /// Consecutive failed health fetches after which the service is shown as offline.
    static constexpr int offlineAfterMisses = 3;

    /// Time until the next health fetch. `visible`: live state is on screen; `active`: the service
    /// is online and some bay holds a job; `setup`: the setup sheet is shown, which wins.
    [[nodiscard]] static Seconds health(bool visible, bool active, bool setup) noexcept;

    /// Time between two diagnostics fetches.
    [[nodiscard]] static Seconds diagnostics(bool visible, bool setup) noexcept;

    /// Whether a diagnostics fetch is due: never checked, or strictly longer ago than the interval.
    [[nodiscard]] static bool diagnosticsDue(
        TimePoint now, std::optional<TimePoint> checked, bool visible, bool setup) noexcept;

    /// How much later than `interval` a fetch may start, so that wake-ups can be shared.
    [[nodiscard]] static Seconds tolerance(Seconds interval) noexcept;
};

} // namespace vesk
