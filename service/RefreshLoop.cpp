#include "service/RefreshLoop.h"

#include "service/ServiceClient.h"

#include <utility>

namespace vesk {

using std::chrono::milliseconds;

RefreshLoop::RefreshLoop(ServiceClient& client, std::function<Situation()> situation, Clock clock)
    : client_(client), situation_(std::move(situation)), clock_(std::move(clock)) {
    timer_.setSingleShot(true);
    // The coarse timers of the toolkit may fire early.
    timer_.setTimerType(Qt::PreciseTimer);
    connect(&timer_, &QTimer::timeout, this, &RefreshLoop::reload);
}

void RefreshLoop::reload() {
    timer_.stop();
    fetchHealth();
}

void RefreshLoop::scheduleRefresh() {
    const Situation now = situation_();
    const Seconds interval = RefreshPolicy::health(now.attention, now.active);
    const auto clock = clock_().time_since_epoch();
    timer_.start(sharedWakeUp(
        {.now = std::chrono::ceil<milliseconds>(clock),
         .interval = std::chrono::ceil<milliseconds>(interval),
         .tolerance = std::chrono::floor<milliseconds>(RefreshPolicy::tolerance(interval))}));
}

void RefreshLoop::fetchHealth() {
    if (refreshing_ || situation_().changingPolicy) {
        scheduleRefresh();
        return;
    }
    refreshing_ = true;
    client_.fetchHealth(this, [this](const std::optional<ConfirmedHealth>& answer) {
        refreshing_ = false;
        if (answer) {
            emit healthReceived(*answer);
        } else {
            emit healthMissed();
        }
        scheduleRefresh();
    });
}

milliseconds sharedWakeUp(const WakeUp& wanted) {
    const milliseconds earliest = wanted.now + wanted.interval;
    const auto wholeSecond = std::chrono::floor<std::chrono::seconds>(earliest + wanted.tolerance);
    return wholeSecond >= earliest ? wholeSecond - wanted.now : wanted.interval;
}

} // namespace vesk
