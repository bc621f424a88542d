#include "service/RefreshLoop.h"

#include "model/RefreshPolicy.h"
#include "service/ServiceClient.h"

#include <utility>

namespace vesk {

using std::chrono::milliseconds;

RefreshLoop::RefreshLoop(
    ServiceClient& client, std::function<Situation()> situation, QObject* parent)
    : QObject(parent), client_(client), situation_(std::move(situation)) {
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
    interval_ = RefreshPolicy::health(now.visible, now.active, now.setup);
    const auto clock = std::chrono::steady_clock::now().time_since_epoch();
    timer_.start(sharedWakeUp(
        std::chrono::ceil<milliseconds>(clock), std::chrono::ceil<milliseconds>(interval_),
        std::chrono::floor<milliseconds>(RefreshPolicy::tolerance(interval_))));
}

std::optional<Seconds> RefreshLoop::pendingInterval() const {
    return timer_.isActive() ? std::optional(interval_) : std::nullopt;
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

milliseconds sharedWakeUp(milliseconds now, milliseconds interval, milliseconds tolerance) {
    const milliseconds earliest = now + interval;
    const auto wholeSecond = std::chrono::floor<std::chrono::seconds>(earliest + tolerance);
    return wholeSecond >= earliest ? wholeSecond - now : interval;
}

} // namespace vesk
