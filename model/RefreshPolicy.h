#pragma once

#include "model/Timing.h"

#include <optional>

namespace vesk {

/// What a person has in view.
struct Attention {
    bool visible = false; ///< live state is on screen
    bool setup = false;   ///< the setup sheet is shown
};

/// How often the service is asked, and when it counts as gone.
struct RefreshPolicy {
    RefreshPolicy() = delete;

    /// Consecutive failed health fetches after which the service is shown as offline.
    static constexpr int offlineAfterMisses = 3;

    /// Time until the next health fetch. `active`: the service is online and some bay holds a job.
    [[nodiscard]] static Seconds health(Attention attention, bool active) noexcept;

    /// Time between two diagnostics fetches.
    [[nodiscard]] static Seconds diagnostics(Attention attention) noexcept;

    /// Whether a diagnostics fetch is due: never checked, or strictly longer ago than the interval.
    [[nodiscard]] static bool
    diagnosticsDue(Attention attention, TimePoint now, std::optional<TimePoint> checked) noexcept;

    /// How much later than `interval` a fetch may start, so that wake-ups can be shared.
    [[nodiscard]] static Seconds tolerance(Seconds interval) noexcept;
};

} // namespace vesk
