#pragma once

#include "agent/Tool.h"
#include "model/ListenerRecoveryPolicy.h"
#include "model/Timing.h"

#include <QObject>

#include <functional>
#include <optional>

namespace vesk {

/// Restarts a service whose process runs while its listener no longer answers. Main thread.
class ListenerRecovery final : public QObject {
    Q_OBJECT

public:
    /// `tool` must outlive this. `starting` tells whether a start is under way; it is asked on
    /// the main thread, before the service manager is and again after.
    ListenerRecovery(Tool& tool, std::function<bool()> starting, Clock clock);

    /// To be called after each failed health fetch, with how many failed in a row. Returns at once.
    /// A restart that fails is told on standard error only.
    void recoverStaleListenerIfNeeded(qint64 misses);

signals:
    /// A restart begins.
    void restarting();

    /// A restart succeeded a second ago: time to ask the service again.
    void restarted();

private:
    void decide(const ToolResult& description, qint64 misses);
    void restart();
    [[nodiscard]] ListenerRecoveryPolicy::Situation situation(qint64 misses) const;

    Tool& tool_;
    std::function<bool()> starting_;
    Clock clock_;
    bool recoveryInFlight_ = false;                ///< a check or a restart is under way
    std::optional<TimePoint> lastRecoveryAttempt_; ///< when the last restart was begun
};

} // namespace vesk
