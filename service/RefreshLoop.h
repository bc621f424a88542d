#pragma once

#include "model/HealthDocument.h"
#include "model/RefreshPolicy.h"

#include <QObject>
#include <QTimer>

#include <functional>

namespace vesk {

class ServiceClient;

/// Keeps the picture of the service current: a chain of one-shot timers and health fetches, the
/// interval chosen afresh each time. The timer is armed when a fetch ends, and by reload() and
/// scheduleRefresh() as they say, which may be while a fetch is under way. Main thread only.
class RefreshLoop final : public QObject {
    Q_OBJECT

public:
    /// What decides the next step, asked for at that moment.
    struct Situation {
        Attention attention;
        bool active = false;         ///< online, and some bay holds a job
        bool changingPolicy = false; ///< a deep-job change is under way: no fetch meanwhile
    };

    RefreshLoop(ServiceClient& client, std::function<Situation()> situation, Clock clock);

    /// Stops the timer and fetches at once. While a fetch or a policy change is under way it arms
    /// the timer instead.
    void reload();

    /// Arms the timer, or arms it again, by the situation at this moment.
    void scheduleRefresh();

signals:
    void healthReceived(const vesk::ConfirmedHealth& health);
    void healthMissed();

private:
    void fetchHealth();

    ServiceClient& client_;
    std::function<Situation()> situation_;
    Clock clock_;
    QTimer timer_;
    bool refreshing_ = false;
};

/// When a wake-up is wanted.
struct WakeUp {
    std::chrono::milliseconds now; ///< since some fixed moment
    std::chrono::milliseconds interval;
    std::chrono::milliseconds tolerance;
};

/// How long to wait so that a wake-up falls at least `interval` and at most `interval` plus
/// `tolerance` after `now`, on a whole second where one lies in that span, as other programs'
/// wake-ups do.
[[nodiscard]] std::chrono::milliseconds sharedWakeUp(const WakeUp& wanted);

} // namespace vesk
