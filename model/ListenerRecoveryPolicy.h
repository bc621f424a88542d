#pragma once

#include "model/Timing.h"

#include <QStringView>

#include <optional>

namespace vesk {

/// When a service that runs but no longer answers is to be restarted.
struct ListenerRecoveryPolicy {
    ListenerRecoveryPolicy() = delete;

    /// Consecutive failed health fetches before a restart is considered.
    static constexpr int missesBeforeRecovery = 3;

    /// Shortest time between two restarts.
    static constexpr Seconds cooldown{90.0};

    /// Whether the service manager's description of the service says that it runs: one of its
    /// lines is "state = running", blanks around it aside.
    [[nodiscard]] static bool serviceReportsRunning(QStringView description);

    /// Whether to restart the service now. A `lastAttempt` in the future declines.
    [[nodiscard]] static bool shouldRecover(
        bool serviceRunning, qint64 misses, bool starting, bool recoveryInFlight, TimePoint now,
        std::optional<TimePoint> lastAttempt) noexcept;
};

} // namespace vesk
