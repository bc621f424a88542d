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

    /// What decides over a restart.
    struct Situation {
        bool serviceRunning = false;   ///< the service manager says so
        qint64 misses = 0;             ///< failed health fetches in a row
        bool starting = false;         ///< a start of the service is under way
        bool recoveryInFlight = false; ///< a restart is under way
        TimePoint now;
        std::optional<TimePoint> lastAttempt; ///< when the last restart was begun
    };

    /// Whether to restart the service now. A `lastAttempt` in the future declines.
    [[nodiscard]] static bool shouldRecover(const Situation& situation) noexcept;
};

} // namespace vesk
